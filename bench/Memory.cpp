// SPDX-License-Identifier: Apache-2.0
// What a first load takes of memory, at its peak and for good; in a process that has done nothing else.
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "Report.h"
#include "ResourceStore/ViewGroupManager.h"
#include "SiteData.h"
#include "Suites.h"

namespace bench {

namespace {

using namespace QorviViewPlugin;

double Kibibytes(const char* key) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind(key, 0) == 0) return std::stod(line.substr(std::string(key).size() + 1));
  }
  throw std::runtime_error("no figures of this process's memory");
}

double HeapInUse() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

// The bytes that the model's texts need beyond their string objects.
double TextBytes(const ViewInfo& view) {
  const auto size = [](const std::string& text) {
    return text.size() <= std::string().capacity() ? 0.0 : static_cast<double>(text.size());
  };
  double bytes = size(view.strGUID) + size(view.strName) + size(view.strSharedUserName);
  for (const ViewPage& page : view.vcPages) {
    for (const CameraGridStruct& window : page.vcWindows) {
      bytes += size(window.map_center_x) + size(window.map_center_y) + size(window.map_more_info) +
               size(window.relate_name) + size(window.extend_resource) + size(window.relate_view_win_no) +
               size(window.single_cycle.cycle_name);
    }
  }
  return bytes;
}

}  // namespace

int RunMemoryChild() {
  std::string response;
  const double textBytes = [] {
    const std::string text = ViewListText(kMedium);
    ResourceStore::CViewGroupManager::Instance().SetDownloadedData(GroupListText(kMedium), text, true);
    return static_cast<double>(text.size());
  }();
  if (!IsInitViewGroupFinish("", response)) return 1;
  malloc_trim(0);
  const double heapBefore = HeapInUse();
  const double residentBefore = Kibibytes("VmRSS:") * 1024;
  if (!IsInitViewFinish("", response)) return 1;
  const double model = HeapInUse() - heapBefore;
  const double peak = Kibibytes("VmHWM:") * 1024 - residentBefore;
  double texts = 0;
  for (unsigned int id = 1; id <= kMedium.views; ++id) {
    texts += TextBytes(*Vant::Base::CSingleton<CViewGroupManager>::Instance().GetViewByID(id)->Info());
  }
  // The library takes the text as a copy of its own, which is "the text" beside the platform's.
  std::printf("%f %f\n", (peak - model - textBytes) / textBytes, (model - texts) / kMedium.Windows());
  return 0;
}

void MemorySuite() {
  if (TheOptions().isShort) return;
  char program[4096];
  const ssize_t length = readlink("/proc/self/exe", program, sizeof program - 1);
  if (length < 0) throw std::runtime_error("where am I?");
  const std::string command = std::string(program, static_cast<size_t>(length)) + " --memory-child";
  double beyond = 0;
  double window = 0;
  const auto measure = [&] {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> child(popen(command.c_str(), "r"), pclose);
    if (!child || std::fscanf(child.get(), "%lf %lf", &beyond, &window) != 2) {
      throw std::runtime_error("the memory of a load could not be measured");
    }
    return beyond;
  };
  AddFigure({"first load, M: peak beyond text and model, in texts", "", ""}, {2.5}, 3, measure);
  AddFigure({"model of M, for each window beside its texts", "", "B"}, {500}, 1, [&] { return window; });
}

}  // namespace bench
