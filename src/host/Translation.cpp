// SPDX-License-Identifier: Apache-2.0
#include "host/Translation.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace host {
namespace {

struct Entry {
  const char* key;
  const char* text;
};

constexpr std::array kEntries = {
    Entry{"PublicView", "Public views"},
    Entry{"PrivateView", "My views"},
    Entry{"Qorvi-Quellan.cb64d4b556f94f928e4082f241a47a7c.name", "Shared views"},
    Entry{"KaBeAUoxlQkKBOqwV", "There is no such folder"},
    Entry{"NYyjnxIZwFAorxuFXv", "There is no such view"},
    Entry{"Map", "Map"},
    Entry{"WebPage", "Web page"},
};

}  // namespace

QString Translation::translate(const char* context, const char* sourceText, const char*, int) const {
  if (std::strcmp(context, "QObject") != 0) return {};
  const auto found = std::find_if(kEntries.begin(), kEntries.end(),
                                  [&](const Entry& entry) { return std::strcmp(entry.key, sourceText) == 0; });
  return found == kEntries.end() ? QString() : QString::fromLatin1(found->text);
}

}  // namespace host
