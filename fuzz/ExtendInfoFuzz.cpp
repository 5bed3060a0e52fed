// SPDX-License-Identifier: Apache-2.0
// The text that a window carries of its digital zoom, fisheye or e-map: any text is read, and what was read can be
// written and read again.
#include "FuzzInput.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace QorviViewPlugin;
  ViewInfo view;
  view.vcPages.resize(1);
  view.vcPages[0].vcWindows.resize(1);
  ReadExtendInfo(std::string(reinterpret_cast<const char*>(data), size), view.vcPages[0].vcWindows[0]);

  const std::string written = WriteViewDocument(view);
  NetLink::CRapidJsonProto document;
  fuzz::Require(document.set_str(written), "not JSON", written);
  PathCursor cursor(document, "/View/");
  const ViewInfo again = ReadView(cursor, DocumentOrigin::Download);
  fuzz::Require(again.vcPages.size() == 1 && again.vcPages[0].vcWindows.size() == 1, "lost the window", written);
  return 0;
}
