// SPDX-License-Identifier: Apache-2.0
#include "host/Editing.h"

#include "host/Connection.h"
#include "host/Look.h"
#include "host/Terminal.h"

namespace host {

void SayWhatIsEdited(const GlobalOptions& options) {
  const std::string where = options.server.empty() ? "the own store " + StorePath(options.dataDir) : options.server;
  Mention(Printable("Editing " + where + " as " + options.user));
}

GlobalOptions WithoutNewStore(const GlobalOptions& options, bool isDryRun) {
  GlobalOptions own = options;
  own.makesNoStore = isDryRun;
  return own;
}

}  // namespace host
