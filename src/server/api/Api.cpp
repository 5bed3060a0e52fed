// SPDX-License-Identifier: Apache-2.0
#include "server/api/Api.h"

#include <charconv>
#include <cstdio>
#include <exception>
#include <new>
#include <optional>
#include <string_view>

#include "server/api/ListReply.h"
#include "server/api/Query.h"
#include "server/documents/Json.h"
#include "server/documents/Replies.h"
#include "server/login/Secrets.h"

namespace server {

struct Api::Exchange {
  const HttpRequest& request;
  Caller caller;
  int32_t id = 0;
};

struct Api::Route {
  std::string_view method;
  std::string_view path;  // below kRoot; "#" stands for an id
  HttpReply (Api::*act)(const Exchange&);
  bool needsSession = true;
};

namespace {

constexpr size_t kSlowBody = size_t{256} << 10;

HttpReply Reply(std::string body) {
  HttpReply reply;
  reply.body = std::move(body);
  return reply;
}

bool IsLogin(const HttpRequest& request) {
  return request.method == "POST" && request.path == std::string(kRoot) + "V0/Sessions";
}

HttpReply Done() {
  return Reply(Envelope("{}"));
}

HttpReply ReplyWith(ElementList list) {
  HttpReply reply;
  reply.headers.emplace_back("Resource-Sequence", std::to_string(list.changeNumber));
  reply.source = std::make_shared<ListReply>(std::move(list));
  return reply;
}

HttpReply Refused(const Refusal& refusal) {
  HttpReply reply = Reply(Envelope(refusal));
  reply.status = refusal.httpStatus;
  reply.headers.emplace_back("Error-Detail", refusal.detail);
  if (refusal.retryAfter > 0) reply.headers.emplace_back("Retry-After", std::to_string(refusal.retryAfter));
  return reply;
}

enum class Match { kNo, kYes, kBadId };  // kBadId: all fits but the id, which is no number

Match MatchPath(std::string_view pattern, std::string_view path, int32_t& id) {
  const size_t hole = pattern.find('#');
  if (hole == std::string_view::npos) return pattern == path ? Match::kYes : Match::kNo;
  const std::string_view before = pattern.substr(0, hole);
  const std::string_view after = pattern.substr(hole + 1);
  if (path.size() <= before.size() + after.size()) return Match::kNo;
  if (path.substr(0, hole) != before || path.substr(path.size() - after.size()) != after) return Match::kNo;
  const std::string text(path.substr(hole, path.size() - before.size() - after.size()));
  if (text.find('/') != std::string::npos) return Match::kNo;
  if (text.find_first_not_of("0123456789", text[0] == '-' ? 1 : 0) != std::string::npos || text == "-") {
    return Match::kBadId;
  }
  id = json::Id(text).value_or(-1);  // a number that no id can have: no such thing
  return Match::kYes;
}

int64_t ReadChangeNumber(const std::optional<std::string>& text) {
  if (!text || text->empty() || text->find_first_not_of("0123456789") != std::string::npos) {
    throw Malformed("After is not the number of a change");
  }
  int64_t number = 0;
  if (std::from_chars(text->data(), text->data() + text->size(), number).ec != std::errc()) throw ChangesGone();
  return number;
}

HttpReply Changed(int64_t number) {
  std::string data = "{";
  AppendChangeNumber(data, number);
  return Reply(Envelope(data + '}'));
}

HttpReply AddedReply(const char* kind, const Added& added) {
  std::string data = std::string("{\"") + kind + "\":{";
  json::AppendMember(data, "ID", added.id);
  AppendChangeNumber(data += "},", added.changeNumber);
  return Reply(Envelope(data + '}'));
}

}  // namespace

const Api::Route Api::kRoutes[] = {
    {"POST", "V0/Sessions", &Api::Login, false},
    {"DELETE", "V0/Sessions/Current", &Api::Logout},
    {"GET", "V0/ViewGroups", &Api::ListGroups},
    {"POST", "V0/ViewGroups", &Api::AddGroup},
    {"PUT", "V0/ViewGroups/Move", &Api::MoveGroups},
    {"PUT", "V0/ViewGroups/#", &Api::ReplaceGroup},
    {"DELETE", "V0/ViewGroups/#", &Api::DeleteGroup},
    {"GET", "V0/Views", &Api::ListViews},
    {"POST", "V0/Views", &Api::AddView},
    {"PUT", "V0/Views/Move", &Api::MoveViews},
    {"PUT", "V0/Views/#", &Api::ReplaceView},
    {"DELETE", "V0/Views/#", &Api::DeleteView},
    {"POST", "V1/View/#/Share", &Api::ShareView},
    {"GET", "V1/View/Default/Config", &Api::GetDefaultView},
    {"PUT", "V1/View/Default/Config", &Api::SetDefaultView},
    {"GET", "V0/Changes", &Api::Changes},
    {"GET", "V0/Users", &Api::ListUsers},
    {"GET", "V0/Elements", &Api::ListElements},
    {"GET", "V0/Areas", &Api::ListAreas},
};

HttpReply Api::Handle(const HttpRequest& request) {
  try {
    return Answer(request);
  } catch (const Refusal& refusal) {
    return Refused(refusal);
  } catch (const std::bad_alloc&) {
    return Refused(NoMemory());
  } catch (const std::exception& e) {
    std::fprintf(stderr, "viewserver: %s %s: %s\n", request.method.c_str(), request.path.c_str(), e.what());
    return Refused(InternalError());
  }
}

HttpReply Api::Answer(const HttpRequest& request) {
  Exchange exchange{request, {}, 0};
  const Route& route = FindRoute(request, exchange);
  if (route.needsSession) exchange.caller = m_site.Authenticate(request.token);
  return (this->*route.act)(exchange);
}

const Api::Route& Api::FindRoute(const HttpRequest& request, Exchange& exchange) const {
  std::string_view path = request.path;
  if (path.substr(0, kRoot.size()) != kRoot) throw UnknownPath();
  path.remove_prefix(kRoot.size());
  bool otherMethod = false;
  bool badId = false;
  for (const Route& route : kRoutes) {
    const Match match = MatchPath(route.path, path, exchange.id);
    if (match == Match::kYes && route.method == request.method) return route;
    otherMethod = otherMethod || match == Match::kYes;
    badId = badId || match == Match::kBadId;
  }
  if (otherMethod) throw Malformed("this path does not have that method");
  if (badId) throw Malformed("the id in the path is not a number");
  throw UnknownPath();
}

int32_t Api::UserOf(const HttpRequest& request) {
  try {
    return m_site.Authenticate(request.token).userId;
  } catch (...) {
    return kNobody;  // Handle tells a small request what is wrong; a large one from a stranger is not worth reading
  }
}

uint64_t Api::BodyLimit(const HttpRequest& request) {
  if (IsLogin(request)) return kUsualBody;
  try {
    m_site.Authenticate(request.token);
    return kMaxBody;
  } catch (const Refusal&) {
    return 0;
  }
}

Lane Api::LaneOf(const HttpRequest& request) {
  if (IsLogin(request)) return Lane::kLogin;
  return request.body.size() > kSlowBody ? Lane::kLargeBody : Lane::kQuick;
}

HttpReply Api::AnswerMalformed() {
  return Refused(Malformed("not an HTTP request"));
}

HttpReply Api::AnswerUnknownCoding() {
  return Refused(UnknownCoding());
}

HttpReply Api::AnswerTooLarge() {
  return Refused(TooLarge());
}

HttpReply Api::AnswerTooMany() {
  return Refused(TooManyConnections());
}

HttpReply Api::AnswerBusy() {
  return Refused(Busy());
}

HttpReply Api::AnswerNoMemory() {
  return Refused(NoMemory());
}

HttpReply Api::Login(const Exchange& exchange) {
  const LoginInput login = ReadLoginBody(exchange.request.body);
  const std::optional<User> user = m_site.FindUser(login.userName);
  const std::string& peer = exchange.request.network;
  const bool isAdmitted = m_guard.Admits(login.userName, peer);
  const int wait = static_cast<int>(m_guard.WaitAt(peer).count());
  if (isAdmitted && wait > 0) throw TooManyFailures(wait);
  if (!isAdmitted || !VerifyPassword(user ? user->passwordHash : std::string(), login.password)) {
    HttpReply reply = Refused(BadLogin());
    reply.delay = m_guard.Failed(login.userName, peer);
    return reply;
  }
  m_guard.Succeeded(login.userName);
  std::string data = "{\"Session\":{";
  json::AppendMember(data, "Token", m_site.OpenSession(user->id, login.clientName.substr(0, 256)));
  json::AppendMember(data += ',', "UserID", user->id);
  json::AppendMember(data += ',', "UserName", user->name);
  return Reply(Envelope(data + "}}"));
}

HttpReply Api::Logout(const Exchange& exchange) {
  m_site.CloseSession(exchange.caller);
  return Done();
}

HttpReply Api::ListViews(const Exchange& exchange) {
  return ReplyWith(m_site.Views(exchange.caller));
}

HttpReply Api::ListGroups(const Exchange& exchange) {
  return ReplyWith(m_site.Groups(exchange.caller));
}

HttpReply Api::Changes(const Exchange& exchange) {
  HttpReply reply;
  reply.events = m_site.OpenFeed(exchange.caller, ReadChangeNumber(Parameter(exchange.request.query, "After")));
  return reply;
}

HttpReply Api::AddView(const Exchange& exchange) {
  return AddedReply("View", m_site.AddView(exchange.caller, ReadViewBody(exchange.request.body)));
}

HttpReply Api::ReplaceView(const Exchange& exchange) {
  return Changed(m_site.ReplaceView(exchange.caller, exchange.id, ReadViewBody(exchange.request.body)));
}

HttpReply Api::DeleteView(const Exchange& exchange) {
  return Changed(m_site.DeleteView(exchange.caller, exchange.id));
}

HttpReply Api::MoveViews(const Exchange& exchange) {
  return Changed(m_site.MoveViews(exchange.caller, ReadMoveBody(Kind::kView, exchange.request.body)));
}

HttpReply Api::ShareView(const Exchange& exchange) {
  const std::vector<int32_t> users = ReadShareBody(exchange.request.body);
  std::string list;
  for (const ShareFailure& failure : m_site.ShareView(exchange.caller, exchange.id, users)) {
    json::AppendMember(list += list.empty() ? "{" : ",{", "UserID", failure.userId);
    json::AppendMember(list += ',', "UserName", failure.userName);
    json::AppendMember(list += ',', "ErrorModule", failure.reason.module);
    json::AppendMember(list += ',', "ErrorCode", failure.reason.code);
    list += '}';
  }
  return Reply(Envelope(R"({"ErrorList":{"Error":[)" + list + "]}}"));
}

HttpReply Api::AddGroup(const Exchange& exchange) {
  return AddedReply("ViewGroup", m_site.AddGroup(exchange.caller, ReadGroupBody(exchange.request.body)));
}

HttpReply Api::ReplaceGroup(const Exchange& exchange) {
  return Changed(m_site.ReplaceGroup(exchange.caller, exchange.id, ReadGroupBody(exchange.request.body)));
}

HttpReply Api::DeleteGroup(const Exchange& exchange) {
  return Changed(m_site.DeleteGroup(exchange.caller, exchange.id));
}

HttpReply Api::MoveGroups(const Exchange& exchange) {
  return Changed(m_site.MoveGroups(exchange.caller, ReadMoveBody(Kind::kGroup, exchange.request.body)));
}

HttpReply Api::GetDefaultView(const Exchange& exchange) {
  const DefaultView view = m_site.GetDefaultView(exchange.caller);
  std::string data = "{\"Config\":{";
  json::AppendMember(data, "Type", view.type);
  json::AppendMember(data += ',', "ID", view.id);
  return Reply(Envelope(data + "}}"));
}

HttpReply Api::SetDefaultView(const Exchange& exchange) {
  m_site.SetDefaultView(exchange.caller, ReadDefaultViewBody(exchange.request.body));
  return Done();
}

HttpReply Api::ListUsers(const Exchange&) {
  std::string list;
  for (const User& user : m_site.Users()) {
    json::AppendMember(list += list.empty() ? "{" : ",{", "ID", user.id);
    json::AppendMember(list += ',', "Name", user.name);
    json::AppendMember(list += ',', "Online", user.online ? 1 : 0);
    json::AppendMember(list += ',', "PTZControlPermission", user.ptz);
    list += '}';
  }
  return Reply(Envelope(R"({"UserList":{"User":[)" + list + "]}}"));
}

HttpReply Api::ListElements(const Exchange& exchange) {
  ElementFilter filter;
  if (const auto type = Parameter(exchange.request.query, "Type")) {
    filter.type = json::Id(*type);
    if (!filter.type) throw Malformed("Type is not a number");
  }
  if (const auto ids = Parameter(exchange.request.query, "IDs")) filter.ids = json::IdList(*ids);
  return Reply(Envelope(m_site.ElementsData(filter)));
}

HttpReply Api::ListAreas(const Exchange&) {
  return Reply(Envelope(m_site.AreasData()));
}

}  // namespace server
