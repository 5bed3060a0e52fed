// SPDX-License-Identifier: Apache-2.0
// The documents that travel: bodies of edits as they come in, elements and the reply envelope as they go out. Readers
// throw a Refusal.
#pragma once

#include <rapidjson/document.h>

#include <string>
#include <vector>

#include "server/Model.h"
#include "server/Refusal.h"

namespace server {

constexpr char kChangeNumber[] = "ChangeNumber";  // a change's number as a decimal text, wherever it is said

struct ViewInput {
  std::string name;
  int32_t groupId = kTopFolder;
  int32_t userId = kNobody;
  int32_t autoCycle = -1;
  int32_t cycleTime = -1;
  std::string document;  // see View::document
};

struct GroupInput {
  std::string name;
  int32_t parentId = kTopFolder;
  int32_t userId = kNobody;
  bool sharedFolder = false;
};

struct MoveInput {
  int32_t folderId = kTopFolder;
  std::vector<int32_t> ids;  // in their new order
};

// Users named in one request to share: each is looked up while everybody else waits.
constexpr size_t kMaxShareUsers = 10000;

struct LoginInput {
  std::string userName, password, clientName;
};

struct DefaultView {
  int32_t type = -1;
  int32_t id = -1;
};

// One element. Windows' "SequenceIndex" and digital-zoom corners become texts in the document, which keeps everything
// else that the client wrote and the server does not own. `element` is changed.
ViewInput ReadView(rapidjson::Value& element, rapidjson::Document::AllocatorType& allocator);
GroupInput ReadGroup(const rapidjson::Value& element);
// A document without members that have become the server's own since it was written; as it is where it is no document.
std::string WithoutServersOwn(const std::string& document);

ViewInput ReadViewBody(const std::string& body);
GroupInput ReadGroupBody(const std::string& body);
MoveInput ReadMoveBody(Kind kind, const std::string& body);
std::vector<int32_t> ReadShareBody(const std::string& body);
DefaultView ReadDefaultViewBody(const std::string& body);
LoginInput ReadLoginBody(const std::string& body);

// An element up to what follows: the document of a view, the closing brace of a group.
std::string GroupHead(const Group& group);
std::string ViewHead(const View& view);
std::string SharedViewHead(const View& view, const std::string& ownerName);

// `data` is the content of "Data" with its braces.
std::string Envelope(const std::string& data);
std::string Envelope(const Refusal& refusal);
// What stands before and after the elements of a list reply, which says up to which change it is complete, and before
// and after the one element of an event.
std::string ListPrefix(Kind kind, int64_t changeNumber);
std::string EventPrefix(Kind kind);
std::string ListSuffix();

}  // namespace server
