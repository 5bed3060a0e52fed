// SPDX-License-Identifier: Apache-2.0
// KeepPages (PortableFile.h): which keys of pages and windows an export keeps.
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <span>

#include "host/Failure.h"
#include "host/JsonText.h"
#include "host/PortableFile.h"

namespace host {
namespace {

using rapidjson::Value;
using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

constexpr int kCamera = 1001;
constexpr int kMap = 7001;

struct Field {
  enum Type { kNumber, kText, kFlag } type;
  const char* key;
  int number = 0;         // what an absent number reads as
  const char* text = "";  // what an absent text reads as
};

using Fields = std::span<const Field>;

constexpr Field kWindowFields[] = {
    {Field::kNumber, "Sequence"},
    {Field::kNumber, "ResourceType"},
    {Field::kText, "ResourceID"},
    {Field::kText, "SiteID"},
    {Field::kNumber, "StreamType"},
    {Field::kNumber, "PresetId"},
    {Field::kNumber, "RelateResourceType", -1},
    {Field::kNumber, "RelateResourceID", -1},
    // Kept although it is a name: the view stores it, and no server could look it up again.
    {Field::kText, "RelateResourceName"},
    {Field::kText, "Xtop", 0, "-1.0"},
    {Field::kText, "Ytop", 0, "-1.0"},
    {Field::kText, "Xbottom", 0, "-1.0"},
    {Field::kText, "Ybottom", 0, "-1.0"},
    {Field::kNumber, "CruiseIndex"},
    {Field::kNumber, "TrackIndex"},
};
// A camera's window keeps its preset's name where other windows keep this text.
constexpr Field kCameraFields[] = {{Field::kText, "PresetName"}};
constexpr Field kOtherFields[] = {{Field::kText, "ExtendResource"}};
constexpr Field kFishEyeFields[] = {{Field::kFlag, "is_fisheye_open"},
                                    {Field::kNumber, "mount_type"},
                                    {Field::kNumber, "expand_mode"},
                                    {Field::kNumber, "window_no"}};
constexpr Field kFishEyePartFields[] = {
    {Field::kNumber, "WndNo"}, {Field::kText, "PosX"}, {Field::kText, "PosY"}, {Field::kText, "Zoom"}};
constexpr Field kMapFields[] = {{Field::kNumber, "LoadMode"},
                                {Field::kText, "PosX"},
                                {Field::kText, "PosY"},
                                {Field::kNumber, "ScaleSize"},
                                {Field::kText, "ExtendInfo"}};
constexpr Field kCenterMarkFields[] = {{Field::kNumber, "TopX"},
                                       {Field::kNumber, "TopY"},
                                       {Field::kNumber, "BottomX"},
                                       {Field::kNumber, "BottomY"},
                                       {Field::kNumber, "StreamType"}};
constexpr Field kZoomListFields[] = {{Field::kNumber, "ZoomMode"}};
constexpr Field kZoomWindowFields[] = {{Field::kNumber, "No"},
                                       {Field::kNumber, "TopX"},
                                       {Field::kNumber, "TopY"},
                                       {Field::kNumber, "BottomX"},
                                       {Field::kNumber, "BottomY"}};
constexpr Field kRelatedZoomFields[] = {{Field::kText, "ViewItemWindowNo"}, {Field::kNumber, "ZoomWindowNo", -1}};
constexpr Field kCycleFields[] = {
    {Field::kNumber, "cycle_type"}, {Field::kNumber, "cycle_time"}, {Field::kText, "CycleName"}};
constexpr Field kCycleResourceFields[] = {{Field::kText, "SiteID"}, {Field::kText, "ResourceID"}};
constexpr Field kPageFields[] = {{Field::kNumber, "windowDivision"}, {Field::kText, "customWindowDivision"}};

[[noreturn]] void Refuse(const std::string& where, const char* key, const char* wanted) {
  throw Failure(kUsage, where + ": \"" + key + "\" is no " + wanted);
}

class PageKeeper {
 public:
  explicit PageKeeper(Writer& writer) : m_writer(writer) {}

  void KeepPages(const Value& pages, const std::string& where) {
    KeepEntries(pages, where, [this](const Value& page, const std::string& at) { KeepPage(page, at); });
  }

 private:
  void KeepPage(const Value& page, const std::string& where) {
    Open(page, where, "page");
    KeepFields(page, kPageFields, where);
    KeepList(page, "PlanItems", where, [this](const Value& window, const std::string& at) { KeepWindow(window, at); });
    m_writer.EndObject();
  }

  void KeepWindow(const Value& window, const std::string& where) {
    Open(window, where, "window");
    KeepFields(window, kWindowFields, where);
    const int type = NumberOf(window, "ResourceType");
    KeepFields(window, type == kCamera ? kCameraFields : kOtherFields, where);
    // A server keeps each of these only for the windows that have a use for it.
    const Value& fishEye = Group(window, "FishEye", where);
    if (FlagOf(fishEye, "is_fisheye_open")) {
      KeepGroup("FishEye", fishEye, kFishEyeFields, "FisheyeWndParam", kFishEyePartFields, where);
    }
    if (type == kMap) KeepGroup("Emap", Group(window, "Emap", where), kMapFields, where);
    KeepGroup("CenterMark", Group(window, "CenterMark", where), kCenterMarkFields, where);
    const Value& zooms = Group(window, "ZoomWindowList", where);
    if (type == kCamera && HasEntries(zooms, "ZoomWindow", where)) {
      KeepGroup("ZoomWindowList", zooms, kZoomListFields, "ZoomWindow", kZoomWindowFields, where);
    }
    KeepGroup("RelatedZoomWindow", Group(window, "RelatedZoomWindow", where), kRelatedZoomFields, where);
    const Value& cycle = Group(window, "CycleInfo", where);
    if (HasEntries(cycle, "CycleResourceID", where)) {
      KeepGroup("CycleInfo", cycle, kCycleFields, "CycleResourceID", kCycleResourceFields, where);
    }
    m_writer.EndObject();
  }

  static const Value& Group(const Value& window, const char* key, const std::string& where) {
    const Value* group = Find(window, key);
    if (group && !group->IsObject()) Refuse(where, key, "object");
    return ObjectOf(window, key);
  }

  static void RequireList(const Value& object, const char* key, const std::string& where) {
    const Value* list = Find(object, key);
    if (list && !list->IsArray()) Refuse(where, key, "list");
  }

  static bool HasEntries(const Value& group, const char* key, const std::string& where) {
    RequireList(group, key, where);
    return !ListOf(group, key).Empty();
  }

  void KeepGroup(const char* key, const Value& group, Fields fields, const std::string& where) {
    m_writer.Key(key);
    m_writer.StartObject();
    KeepFields(group, fields, where + "." + key);
    m_writer.EndObject();
  }

  void KeepGroup(const char* key, const Value& group, Fields fields, const char* listKey, Fields partFields,
                 const std::string& where) {
    m_writer.Key(key);
    m_writer.StartObject();
    KeepFields(group, fields, where + "." + key);
    KeepList(group, listKey, where + "." + key, [&](const Value& part, const std::string& at) {
      Open(part, at, "object");
      KeepFields(part, partFields, at);
      m_writer.EndObject();
    });
    m_writer.EndObject();
  }

  template <class KeepOne>
  void KeepList(const Value& object, const char* key, const std::string& where, const KeepOne& keepOne) {
    RequireList(object, key, where);
    m_writer.Key(key);
    KeepEntries(ListOf(object, key), where + "." + key, keepOne);
  }

  template <class KeepOne>
  void KeepEntries(const Value& list, const std::string& where, const KeepOne& keepOne) {
    m_writer.StartArray();
    size_t number = 0;
    for (const Value& entry : list.GetArray()) keepOne(entry, where + "[" + std::to_string(++number) + "]");
    m_writer.EndArray();
  }

  void KeepFields(const Value& object, Fields fields, const std::string& where) {
    for (const Field& field : fields) {
      const Value* value = Find(object, field.key);
      m_writer.Key(field.key);
      switch (field.type) {
        case Field::kNumber:
          if (value && !value->IsInt()) Refuse(where, field.key, "whole number of 32 bits");
          m_writer.Int(value ? value->GetInt() : field.number);
          break;
        case Field::kText:
          if (value && !value->IsString()) Refuse(where, field.key, "text");
          WriteText(m_writer, value ? TextOf(object, field.key) : field.text);
          break;
        case Field::kFlag:
          if (value && !value->IsBool()) Refuse(where, field.key, "true or false");
          m_writer.Bool(value && value->GetBool());
          break;
      }
    }
  }

  void Open(const Value& object, const std::string& where, const char* wanted) {
    if (!object.IsObject()) throw Failure(kUsage, where + " is no " + wanted);
    m_writer.StartObject();
  }

  Writer& m_writer;
};

}  // namespace

std::string KeepPages(const Value& pages, const std::string& where) {
  if (!pages.IsArray()) Refuse(where, "PlanPages", "list");
  rapidjson::StringBuffer buffer;
  Writer writer(buffer);
  PageKeeper(writer).KeepPages(pages, where + ".PlanPages");
  return std::string(buffer.GetString(), buffer.GetSize());
}

}  // namespace host
