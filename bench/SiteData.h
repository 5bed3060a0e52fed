// SPDX-License-Identifier: Apache-2.0
// Sites of any size, the same on every run: as the model that a load of them must give, and as the texts that a server
// sends. The texts are put together by hand, so that they also check what the library writes.
#pragma once

#include <string>

#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"

namespace bench {

struct SiteSize {
  const char* name;
  unsigned int views;
  unsigned int pages;    // of each view
  unsigned int windows;  // of each page
  unsigned int viewsOfGroup = 100;

  unsigned int WindowsOfView() const { return pages * windows; }
  unsigned int Windows() const { return views * WindowsOfView(); }
  unsigned int Groups() const { return (views + viewsOfGroup - 1) / viewsOfGroup; }
};

inline constexpr SiteSize kSmall{"S", 1000, 1, 9};
inline constexpr SiteSize kMedium{"M", 10000, 1, 16};
inline constexpr SiteSize kLarge{"L", 2000, 4, 64};

// Ids count from 1, views as well as groups. A new site's changes are its groups, then its views.
QorviViewPlugin::ViewInfo MakeView(const SiteSize& size, unsigned int id);

// List replies.
std::string ViewListText(const SiteSize& size);
std::string GroupListText(const SiteSize& size);
// A change document of one view, or of the views from `first` to `last`, all changed last by that change.
std::string ChangeText(const SiteSize& size, unsigned int first, unsigned int last, int method,
                       QorviViewPlugin::ChangeNumber number);
// The body of a request that adds or changes the view.
std::string ViewBodyText(const QorviViewPlugin::ViewInfo& view);
// The site as a seed of the server: a user "bench" and public views.
std::string SeedText(const SiteSize& size);

// Puts a name for every element of the site into the platform's store.
void KnowElements();
std::string ElementName(unsigned int id);
// Elements have the ids from 1 to this one.
inline constexpr unsigned int kElements = 4000;

}  // namespace bench
