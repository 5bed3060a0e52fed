// SPDX-License-Identifier: Apache-2.0
// What a report says of a site: its folders, its views with their pages drawn, and where each resource is shown.
#pragma once

#include <string>
#include <vector>

#include "host/ViewTree.h"

namespace host {

struct ReportPage {
  std::string head;     // "Page 1 of 2 · layout 4 · 4 windows"
  std::string words;    // the whole page, a line for each window
  std::string drawing;  // an SVG element, as viewdraw draws for other documents
};

struct ReportView {
  std::string id;
  std::string name;
  std::string guid;
  std::string sharedBy;  // empty: nobody else's
  size_t folder = 0;     // index in the tree
  bool isDefault = false;
  int turnedAfter = 0;  // seconds; 0: the pages are not turned
  size_t windows = 0;
  std::vector<ReportPage> pages;
};

// One place where a resource is shown.
struct Use {
  size_t view = 0;  // index in the report
  int page = 0;     // from 1
  int window = 0;   // its number
  std::string how;  // empty: the window shows it; else "related" or "in its cycle"
};

struct ReportResource {
  std::string kind;  // "camera", "door", ...
  std::string id;    // a web page's is its address
  std::string name;  // empty: not known
  std::string site;  // empty: none
  bool isOnServer = false;
  std::vector<Use> uses;  // in the order of the views
};

struct Report {
  std::string user;
  std::string server;   // its address; empty: the one inside viewctl
  std::string written;  // when
  ViewTree tree;
  std::vector<ReportView> views;          // folder by folder
  std::vector<ReportResource> resources;  // by kind and name
  std::string defaultId;                  // what opens first; empty: nothing was chosen
  size_t defaultFolder = 0;               // index in the tree where that is a folder, else the number of folders
  std::string drawingRules;               // the CSS of the drawings
};

}  // namespace host
