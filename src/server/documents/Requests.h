// SPDX-License-Identifier: Apache-2.0
// What clients send, and a seed's views and groups: read and checked for their form. Readers throw a Refusal.
#pragma once

#include <rapidjson/document.h>

#include <string>
#include <vector>

#include "server/model/Model.h"

namespace server {

struct ViewInput {
  std::string name;
  int32_t folderId = kTopFolder;
  int32_t userId = kNobody;
  int32_t autoCycle = -1;
  int32_t cycleTime = -1;
  std::string document;  // see View::document
};

struct GroupInput {
  std::string name;
  int32_t folderId = kTopFolder;
  int32_t userId = kNobody;
  bool sharedFolder = false;
};

struct MoveInput {
  int32_t folderId = kTopFolder;
  std::vector<int32_t> ids;  // in their new order
};

// The most users in one share request. Looking them up holds the site's lock.
constexpr size_t kMaxShareUsers = 10000;

struct LoginInput {
  std::string userName, password, clientName;
};

struct DefaultView {
  int32_t type = -1;
  int32_t id = -1;
};

// One element. Windows' "SequenceIndex" and digital-zoom corners become texts in the document, which keeps everything
// else that the client wrote and the server does not own.
ViewInput ReadView(const rapidjson::Value& element);
GroupInput ReadGroup(const rapidjson::Value& element);
// Whether a stored text can be the name of a user, a group or a view.
bool IsName(const std::string& text);
// Whether a stored text can stand before a document.
bool IsHead(const std::string& text);
// Why what stands in a store cannot follow a head in a list, as ReadView has it: one line; null where it can.
const char* WhyNoDocument(const std::string& document);
// A stored document without the members that have become the server's own since; unchanged where it cannot be read.
std::string WithoutServersOwn(const std::string& document);

ViewInput ReadViewBody(const std::string& body);
GroupInput ReadGroupBody(const std::string& body);
MoveInput ReadMoveBody(ObjectKind kind, const std::string& body);
std::vector<int32_t> ReadShareBody(const std::string& body);
DefaultView ReadDefaultViewBody(const std::string& body);
LoginInput ReadLoginBody(const std::string& body);

}  // namespace server
