// SPDX-License-Identifier: Apache-2.0
// What there is on a server for windows to show, and what of it they do show.
#pragma once

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "drawing/Page.h"
#include "host/report/Report.h"

namespace host {

// All elements and areas of the server that the process is logged in at, as resources that nothing shows yet. The
// platform gets to know them too, so that what the library answers afterwards has their names. Throws Failure kRefused
// when the server does not list them.
std::vector<ReportResource> ListSiteResources();

// Adds up what windows show.
class ResourceIndex {
 public:
  explicit ResourceIndex(std::vector<ReportResource> onServer);
  // The page is the `view`th's of the report.
  void Add(const drawing::Page& page, size_t view);
  // By kind and name. Areas that no window goes through are left out: they are no resources of windows.
  std::vector<ReportResource> Take();

 private:
  void AddUse(const QString& kind, const QString& id, const QString& name, const Use& use);
  void AddWindow(const drawing::Window& window, const Use& use);

  std::map<std::pair<std::string, std::string>, ReportResource> m_resources;  // by kind and id
};

}  // namespace host
