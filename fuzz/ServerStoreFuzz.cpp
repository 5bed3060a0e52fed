// SPDX-License-Identifier: Apache-2.0
// Any requests to the server's operations and its store, as several users. Each request is answered with a whole
// envelope, and the lists stay well-formed. Input: requests of a byte for user and method, path and query, 0xFF, the
// body, 0xFF.
#include <rapidjson/document.h>

#include <memory>

#include "FuzzInput.h"
#include "server/api/Api.h"
#include "server/login/Secrets.h"
#include "server/site/Site.h"

namespace {

using namespace server;

std::string BodyOf(HttpReply& reply) {
  if (!reply.source) return reply.body;
  std::string body, chunk;
  while (reply.source->Next(chunk)) body += chunk;
  fuzz::Require(body.size() <= reply.source->Length(), "a reply longer than promised");
  return body;
}

rapidjson::Document ReadEnvelope(HttpReply& reply) {
  const std::string body = BodyOf(reply);
  rapidjson::Document document;
  document.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag>(body.data(), body.size());
  fuzz::Require(!document.HasParseError() && document.IsObject() && document.HasMember("ResponseStatus") &&
                    document["ResponseStatus"]["ErrorCode"].IsInt(),
                "no envelope", body);
  const bool good = document["ResponseStatus"]["ErrorCode"].GetInt() == 0;
  fuzz::Require(good == (reply.status < 300), "status and error code differ", body);
  fuzz::Require(document["ResponseStatus"]["ErrorModule"].GetInt() != 100 ||
                    document["ResponseStatus"]["ErrorCode"].GetInt() != 8,
                "an internal error", body);
  return document;
}

// One store for the process: starting one costs as much as thousands of requests. It is emptied by a new one now and
// then, so that an input depends on few others.
struct World {
  World() : site(":memory:", {100, 1 << 20}, SecondsNow), api(site) {
    for (const char* name : {"ann", "bob"}) {
      site.Make([name](Editor& editor) { editor.AddUser(name, ""); });
      tokens.push_back(OpenSession(name));
    }
    tokens.emplace_back("no such token");
  }
  std::string OpenSession(const char* name) {
    std::string token;
    const int32_t user = site.FindUser(name)->id;
    site.Make([&](Editor& editor) { token = editor.OpenSession(user, "fuzz"); });
    return token;
  }
  Site site;
  Api api;
  std::vector<std::string> tokens;
};

HttpReply Ask(World& world, const std::string& method, const std::string& target, const std::string& token,
              const std::string& body) {
  HttpRequest request;
  request.method = method;
  request.path = target.substr(0, target.find('?'));
  if (request.path.size() < target.size()) request.query = target.substr(request.path.size() + 1);
  request.token = token;
  request.body = body;
  world.api.BodyLimit(request);
  // A log-in hashes a password, which is slow by purpose.
  if (world.api.LaneOf(request) != Lane::kQuick) return world.api.Refused(Refusal::Malformed("slow"));
  HttpReply reply = world.api.Handle(request);
  return reply.pending ? reply.pending->Wait() : std::move(reply);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool ready = (InitSecrets(), true);
  (void)ready;
  static std::unique_ptr<World> world;
  static int uses = 0;
  if (uses++ % 1000 == 0) world = std::make_unique<World>();

  static const char* const methods[] = {"GET", "POST", "PUT", "DELETE"};
  fuzz::Input input(data, size);
  for (int requests = 0; !input.AtEnd() && requests < 10; ++requests) {
    const unsigned int kind = input.Byte();
    const std::string target = std::string(kRoot) + input.Text();
    const std::string body = input.Text();
    HttpReply reply = Ask(*world, methods[kind % 4], target, world->tokens[kind / 4 % 3], body);
    if (!reply.events) ReadEnvelope(reply);
  }
  // A session that was closed on the way is opened again.
  for (size_t i = 0; i < 2; ++i) {
    for (const char* list : {"V0/Views", "V0/ViewGroups"}) {
      HttpReply reply = Ask(*world, "GET", std::string(kRoot) + list, world->tokens[i], "");
      if (ReadEnvelope(reply)["ResponseStatus"]["ErrorModule"].GetInt() == 101) {
        world->tokens[i] = world->OpenSession(i == 0 ? "ann" : "bob");
      }
    }
  }
  return 0;
}
