// SPDX-License-Identifier: Apache-2.0
#include "host/ViewText.h"

#include <charconv>

#include "drawing/Kinds.h"
#include "host/Ids.h"
#include "host/JsonText.h"
#include "host/Terminal.h"

namespace host {
namespace {

using rapidjson::Value;

using drawing::WindowKind;

// A word that stands for several types says less than the type.
std::string NameOfType(int type) {
  const WindowKind kind = drawing::KindOf(type);
  const bool isOneOfSeveral = kind == WindowKind::kElement || kind == WindowKind::kText || kind == WindowKind::kOther;
  return isOneOfSeveral ? "resource of type " + std::to_string(type) : drawing::WordOf(type).toStdString();
}

std::string Quoted(const std::string& name) {
  return "\"" + Printable(name) + "\"";
}

// A space and the quoted name; nothing for no name.
std::string Named(const std::string& name) {
  return name.empty() ? "" : " " + Quoted(name);
}

std::string DecimalOf(const Value& object, const char* key) {
  return std::to_string(NumberOf(object, key));
}

// Decimal text without the zeros at its end; "-" for a text that is no number.
std::string Shortened(const std::string& decimal) {
  double number = 0;
  const char* end = decimal.data() + decimal.size();
  if (std::from_chars(decimal.data(), end, number).ptr != end || decimal.empty()) return "-";
  std::string text = decimal;
  if (text.find('.') != std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
  }
  return text;
}

double AsNumber(const std::string& decimal) {
  double number = 0;
  std::from_chars(decimal.data(), decimal.data() + decimal.size(), number);
  return number;
}

std::string Thousandths(const Value& box) {
  const auto corner = [&](const char* x, const char* y) { return DecimalOf(box, x) + "," + DecimalOf(box, y); };
  return corner("TopX", "TopY") + " to " + corner("BottomX", "BottomY") + " thousandths";
}

using Lines = std::vector<std::string>;

void DescribePicture(const Value& window, Lines& extras) {
  if (const int preset = NumberOf(window, "PresetId"); preset > 0) {
    extras.push_back("preset " + std::to_string(preset) + Named(TextOf(window, "PresetName")));
  }
  if (const int cruise = NumberOf(window, "CruiseIndex"); cruise > 0)
    extras.push_back("cruise " + std::to_string(cruise));
  if (const int track = NumberOf(window, "TrackIndex"); track > 0) extras.push_back("track " + std::to_string(track));
  const bool zoomed = AsNumber(TextOf(window, "Xbottom")) > AsNumber(TextOf(window, "Xtop")) &&
                      AsNumber(TextOf(window, "Ybottom")) > AsNumber(TextOf(window, "Ytop"));
  if (zoomed) {
    extras.push_back("digital zoom from " + Shortened(TextOf(window, "Xtop")) + "," +
                     Shortened(TextOf(window, "Ytop")) + " to " + Shortened(TextOf(window, "Xbottom")) + "," +
                     Shortened(TextOf(window, "Ybottom")));
  }
}

void DescribeFishEye(const Value& fishEye, Lines& extras) {
  if (!FlagOf(fishEye, "is_fisheye_open")) return;
  extras.push_back("fisheye: mount " + DecimalOf(fishEye, "mount_type") + ", expansion " +
                   DecimalOf(fishEye, "expand_mode") + ", window " + DecimalOf(fishEye, "window_no"));
  for (const Value& part : ListOf(fishEye, "FisheyeWndParam").GetArray()) {
    extras.push_back("  part " + DecimalOf(part, "WndNo") + " at " + Shortened(TextOf(part, "PosX")) + "," +
                     Shortened(TextOf(part, "PosY")) + ", zoom " + Shortened(TextOf(part, "Zoom")));
  }
}

void DescribeCycle(const Value& cycle, Lines& extras) {
  const Value& resources = ListOf(cycle, "CycleResourceID");
  if (resources.Empty()) return;
  const int type = NumberOf(cycle, "cycle_type");
  const std::string kind = type == 0 ? "camera" : type == 1 ? "area" : "resource";
  extras.push_back("cycles" + Named(TextOf(cycle, "CycleName")) + " through " + Counted(resources.Size(), kind) + ", " +
                   DecimalOf(cycle, "cycle_time") + " s each");
  for (const Value& resource : resources.GetArray()) {
    const std::string id = TextOf(resource, "ResourceID");
    extras.push_back("  " + kind + (IsOfSomething(id) ? " " + Printable(id) : "") +
                     Named(TextOf(resource, "ResourceName")));
  }
}

void DescribeMap(const Value& map, Lines& extras) {
  extras.push_back("map centre " + Printable(TextOf(map, "PosX")) + "," + Printable(TextOf(map, "PosY")) + ", scale " +
                   DecimalOf(map, "ScaleSize") + ", load mode " + DecimalOf(map, "LoadMode"));
  if (const std::string more = TextOf(map, "ExtendInfo"); !more.empty()) extras.push_back("map info " + Quoted(more));
}

void DescribeMarks(const Value& window, Lines& extras) {
  const Value& mark = ObjectOf(window, "CenterMark");
  if (NumberOf(mark, "BottomX") > NumberOf(mark, "TopX") || NumberOf(mark, "BottomY") > NumberOf(mark, "TopY")) {
    extras.push_back("centre mark " + Thousandths(mark));
  }
  for (const Value& zoom : ListOf(ObjectOf(window, "ZoomWindowList"), "ZoomWindow").GetArray()) {
    extras.push_back("zoom window " + DecimalOf(zoom, "No") + " " + Thousandths(zoom));
  }
  const Value& related = ObjectOf(window, "RelatedZoomWindow");
  if (const int number = NumberOf(related, "ZoomWindowNo", -1); number >= 0) {
    extras.push_back("shows zoom window " + std::to_string(number) + " of window " +
                     Printable(TextOf(related, "ViewItemWindowNo")));
  }
}

Lines DescribeExtras(const Value& window) {
  Lines extras;
  DescribePicture(window, extras);
  DescribeFishEye(ObjectOf(window, "FishEye"), extras);
  DescribeCycle(ObjectOf(window, "CycleInfo"), extras);
  if (drawing::KindOf(NumberOf(window, "ResourceType")) == WindowKind::kMap)
    DescribeMap(ObjectOf(window, "Emap"), extras);
  DescribeMarks(window, extras);
  if (const std::string id = std::to_string(IdOf(window, "RelateResourceID")); id != kNoId) {
    const int type = NumberOf(window, "RelateResourceType", -1);
    extras.push_back("related " + drawing::WordOfRelated(type).toStdString() + " " + id +
                     Named(TextOf(window, "RelateResourceName")));
  }
  return extras;
}

std::string DescribeHead(const Value& detail, const std::vector<std::string>& folder) {
  std::string text = Quoted(TextOf(detail, "Name")) + "  (view " + Printable(TextOf(detail, "ID")) + ")\n";
  std::string place;
  for (const std::string& name : folder) place += (place.empty() ? "" : " / ") + Printable(name);
  text += "  lies in    " + place + "\n";
  if (FlagOf(detail, "is_share_view")) {
    text += "  shared by  " + Printable(TextOf(detail, "share_user_name")) + "\n";
  }
  text += "  pages      " + std::to_string(ListOf(detail, "PlanPages").Size());
  text += NumberOf(detail, "AutoCycle") > 0 ? ", turned every " + DecimalOf(detail, "RoundTime") + " s\n" : "\n";
  if (const std::string guid = TextOf(detail, "AppCode"); !guid.empty())
    text += "  GUID       " + Printable(guid) + "\n";
  return text;
}

}  // namespace

std::string DescribeResource(const Value& window) {
  const int type = NumberOf(window, "ResourceType");
  if (type == 0) return "empty";
  std::string text = NameOfType(type) + Named(TextOf(window, "ResourceName"));
  if (const std::string id = UnsignedId(TextOf(window, "ResourceID")); IsOfSomething(id))
    text += ", id " + Printable(id);
  // Every window has a stream, but only a camera has a use for it.
  if (const int stream = NumberOf(window, "StreamType"); drawing::KindOf(type) == WindowKind::kCamera && stream > 0) {
    text += ", stream " + std::to_string(stream);
  }
  return text;
}

std::string DescribeView(const Value& detail, const std::vector<std::string>& folder) {
  std::string text = DescribeHead(detail, folder);
  int page = 0;
  for (const Value& entry : ListOf(detail, "PlanPages").GetArray()) {
    const Value& windows = ListOf(entry, "PlanItems");
    text += "\nPage " + std::to_string(++page) + ": layout " + DecimalOf(entry, "windowDivision");
    text += Named(TextOf(entry, "customWindowDivision")) + ", " + Counted(windows.Size(), "window") + "\n";
    for (const Value& window : windows.GetArray()) {
      text += "  " + DecimalOf(window, "Sequence") + ". " + DescribeResource(window) + "\n";
      for (const std::string& extra : DescribeExtras(window)) text += "       " + extra + "\n";
    }
  }
  return text;
}

}  // namespace host
