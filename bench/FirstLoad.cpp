// SPDX-License-Identifier: Apache-2.0
// The first load: downloaded text to filled tables, without HTTP.
#include <rapidjson/document.h>
#include <rapidjson/pointer.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "ModelCheck.h"
#include "Peers.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewList.h"
#include "Report.h"
#include "ResourceStore/ViewGroupManager.h"
#include "SiteData.h"
#include "Suites.h"
#include "VantBase/Log.h"

namespace bench {

namespace {

void Download(const SiteSize& size, const std::string& views) {
  ResourceStore::CViewGroupManager::Instance().SetDownloadedData(GroupListText(size), views, true);
}

void LoadGroups() {
  std::string response;
  Check(IsInitViewGroupFinish("", response), "the groups were not loaded");
}
void LoadViews() {
  std::string response;
  Check(IsInitViewFinish("", response) && response.find(R"("error_info":"")") != std::string::npos,
        "the views were not loaded: " + response);
}
void Forget() {
  ClearViewData();
  LoadGroups();
}

Side Loading() {
  return {LoadViews, Forget};
}

Side Parsing(const std::string& text) {
  const auto document = std::make_shared<std::optional<rapidjson::Document>>();
  return {[document, &text] {
            document->emplace();
            (*document)->Parse(text.c_str());
            Use(&document);
          },
          [document] { document->reset(); }};
}

// Every key of every window resolved from the root, as a reader without a place in the document would.
size_t ResolveByPointers(const rapidjson::Document& document, const SiteSize& size) {
  static constexpr const char* kKeys[] = {"SequenceIndex",
                                          "ResourceType",
                                          "SiteID",
                                          "ResourceID",
                                          "RelateResourceID",
                                          "RelateResourceName",
                                          "RelateResourceType",
                                          "ExtendResource",
                                          "WindowNo",
                                          "Xtop",
                                          "Ytop",
                                          "Xbottom",
                                          "Ybottom",
                                          "PresetPointIndex",
                                          "CruiseIndex",
                                          "TrackIndex",
                                          "StreamType",
                                          "FishEye",
                                          "Cycle",
                                          "CenterMark",
                                          "ZoomWindowList/ZoomWindow",
                                          "RelatedZoomWindow/ViewItemWindowNo",
                                          "RelatedZoomWindow/ZoomWindowNo",
                                          "ExtendInfo"};
  size_t found = 0;
  for (unsigned int v = 0; v < size.views; ++v) {
    for (unsigned int w = 0; w < size.windows; ++w) {
      const std::string window = "/ResponseStatus/Data/ViewList/View/" + std::to_string(v) +
                                 "/PlanPages/0/PlanViewItem/" + std::to_string(w) + "/";
      for (const char* key : kKeys) {
        if (rapidjson::Pointer((window + key).c_str()).Get(document)) ++found;
      }
    }
  }
  return found;
}

void ComparePeers(const SiteSize& size, const std::string& text) {
  AddRatio({"QJsonDocument::fromJson, S", "bare DOM parse"}, {}, {[&] {
             QJsonParseError error;
             const QByteArray bytes = QByteArray::fromRawData(text.data(), static_cast<int>(text.size()));
             const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
             Check(error.error == QJsonParseError::NoError, "QJsonDocument cannot read the site");
             Use(&document);
           }},
           Parsing(text));
  AddRatio({"nlohmann::json::parse, S", "bare DOM parse"}, {}, {[&] {
             const auto document = nlohmann::json::parse(text);
             Use(&document);
           }},
           Parsing(text));
  AddRatio({"parse and rapidjson::Pointer for each key, S", "bare DOM parse"}, {}, {[&] {
             rapidjson::Document document;
             document.Parse(text.c_str());
             const size_t found = ResolveByPointers(document, size);
             Check(found >= 19 * size.Windows(), "the pointers found too little");
           }},
           Parsing(text));
}

// The text with every value of that name in quotes, or without those that it has.
std::string WithQuotesChanged(std::string text, const std::string& name) {
  const std::string member = '"' + name + "\":";
  for (size_t at = text.find(member); at != std::string::npos; at = text.find(member, at)) {
    at += member.size();
    const size_t end = text.find_first_of(",}", at);
    const bool isQuoted = text[at] == '"';
    const std::string value = text.substr(at, end - at);
    text.replace(at, end - at, isQuoted ? value.substr(1, value.size() - 2) : '"' + value + '"');
  }
  return text;
}

// The text with each of the two names where the other stood.
std::string WithNamesExchanged(const std::string& text, const std::string& one, const std::string& other) {
  std::string exchanged;
  exchanged.reserve(text.size());
  for (size_t at = 0; at < text.size(); ++at) {
    exchanged += text[at];
    if (text[at] != '"') continue;
    for (const auto& [from, to] : {std::pair{one, other}, std::pair{other, one}}) {
      if (text.compare(at + 1, from.size() + 2, from + "\":") != 0) continue;
      exchanged += to;
      at += from.size();
      break;
    }
  }
  return exchanged;
}

// What the fast reader leaves to the plain one, wholly or view by view, or reads in another way.
void MeasureOtherForms(const std::string& text) {
  const auto reading = [](const std::string& form, auto read) {
    return Side{[&form, read] {
      Vant::Base::Error::ErrorCode error;
      QorviViewPlugin::ViewList list;
      read(form, error, list);
      Use(&list);
    }};
  };
  for (const auto& [name, form] :
       {std::pair{"numbers as texts", WithQuotesChanged(text, "WindowNo")},
        std::pair{"texts as numbers", WithQuotesChanged(text, "SequenceIndex")},
        std::pair{"members in another order", WithNamesExchanged(text, "SiteID", "WindowNo")},
        std::pair{"blanks behind", text + std::string(1000, ' ')}, std::pair{"garbage behind", text + "x"}}) {
    AddRatio({"view list with " + std::string(name) + ", S", "the plain reader"}, {1.3},
             reading(form, QorviViewPlugin::ReadViewList), reading(form, QorviViewPlugin::ReadViewListByPaths));
  }
}

// Takes every line and throws it away.
class Sink : public Vant::Base::ILogSink {
 public:
  explicit Sink(int from) : m_from(from) {}
  bool Wants(int level) const override { return level >= m_from; }
  void Write(int, const char*, const std::string& text) override { Use(text.data()); }

 private:
  int m_from;
};

void MeasureSite(const SiteSize& size, const Goal& goal) {
  const std::string text = ViewListText(size);
  const std::string name = std::string(size.name) + ", " + std::to_string(text.size() / 1000000) + " MB";
  Download(size, text);
  LoadGroups();
  LoadViews();
  CheckCache(size);
  Forget();
  AddRatio({"first load, " + name, "bare DOM parse"}, goal, Loading(), Parsing(text));
  Side perWindow = Loading();
  perWindow.units = size.Windows();
  Measure(std::string("first load for each window, ") + size.name, perWindow);
  if (size.name == kMedium.name) {
    Vant::Base::SetLogSink(std::make_shared<Sink>(0));
    AddRatio({"first load, " + name + ", every log line wanted", "bare DOM parse"}, {}, Loading(), Parsing(text));
    Vant::Base::SetLogSink(std::make_shared<Sink>(5));
  }
  if (size.name != kLarge.name) CompareReaders(size, text, [&] { return Parsing(text); });
  if (size.name == kSmall.name) {
    ComparePeers(size, text);
    MeasureOtherForms(text);
  }
  ClearViewData();
  ResourceStore::CViewGroupManager::Instance().SetDownloadedData("", "", false);
}

}  // namespace

void FirstLoadSuite() {
  Vant::Base::SetLogSink(std::make_shared<Sink>(5));
  SiteSize medium = kMedium;
  SiteSize large = kLarge;
  if (TheOptions().isShort) {
    medium.views /= 10;
    large.views /= 20;
  }
  MeasureSite(kSmall, {0.9});
  MeasureSite(medium, {0.9});
  MeasureSite(large, {0.9});
  AddGrowth({"first load for each window, M", "S"}, 2.5, "first load for each window, M",
            "first load for each window, S");
  AddGrowth({"first load for each window, L", "S"}, 2.5, "first load for each window, L",
            "first load for each window, S");
  Vant::Base::SetLogSink(nullptr);
}

}  // namespace bench
