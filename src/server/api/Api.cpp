// SPDX-License-Identifier: Apache-2.0
#include "server/api/Api.h"

#include <SQLiteCpp/Exception.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <exception>
#include <new>
#include <optional>
#include <string_view>

#include "server/api/EditReply.h"
#include "server/documents/Json.h"
#include "server/documents/Replies.h"
#include "server/login/Secrets.h"
#include "server/model/Refusal.h"

namespace server {

namespace {

// One request on its way: who asks, and the id in its path.
struct Exchange {
  Site& site;
  LoginGuard& guard;
  const HttpRequest& request;
  Caller caller;
  int32_t id = 0;
};

struct Route {
  std::string_view method;
  std::string_view path;  // below kRoot; "#" stands for an id
  HttpReply (*act)(const Exchange&);
  bool needsSession = true;
};

constexpr size_t kSlowBody = size_t{256} << 10;
constexpr size_t kChunk = size_t{256} << 10;

// A list reply, put together from its elements' stored texts while it is sent.
class ListReply : public BodySource {
 public:
  explicit ListReply(ElementList list) : m_list(std::move(list)) {
    m_length = m_prefix.size() + m_suffix.size();
    for (const auto& [head, document] : m_list.elements) {
      m_length += head->size() + (document ? document->size() : 0) + 1;
    }
    if (!m_list.elements.empty()) m_length += m_list.elements.size() - 1;  // commas
  }

  std::optional<uint64_t> Length() const override { return m_length; }

  bool Next(std::string& chunk) override {
    const size_t count = m_list.elements.size();
    chunk.clear();
    if (m_suffixSent) return false;
    if (m_next == 0) chunk = m_prefix;
    for (; m_next < count && chunk.size() < kChunk; ++m_next) {
      const auto& [head, document] = m_list.elements[m_next];
      if (m_next > 0) chunk += ',';
      chunk += *head;
      if (document) chunk += *document;
      chunk += '}';
    }
    if (m_next == count && chunk.size() < kChunk) {
      chunk += m_suffix;
      m_suffixSent = true;
    }
    return true;
  }

 private:
  const ElementList m_list;
  const std::string m_prefix = ListPrefix(m_list.kind, m_list.changeNumber);
  const std::string m_suffix = ListSuffix();
  uint64_t m_length = 0;
  size_t m_next = 0;  // the element to send next
  bool m_suffixSent = false;
};

bool IsLogin(const HttpRequest& request) {
  return request.method == "POST" && request.path == std::string(kRoot) + "V0/Sessions";
}

constexpr char kHistory[] = "Resource-History";

HttpReply ReplyWith(ElementList list, const std::string& history) {
  HttpReply reply;
  reply.headers.emplace_back(kHistory, history);
  reply.headers.emplace_back("Resource-Sequence", std::to_string(list.changeNumber));
  reply.source = std::make_shared<ListReply>(std::move(list));
  return reply;
}

HttpReply ReplyWith(const char* name, std::initializer_list<wire::Member> members) {
  return Reply(Envelope(std::string("{\"") + name + "\":{" + wire::Members(members) + "}}"));
}

enum class Match { kNo, kYes, kBadId };  // kBadId: all fits but the id, which is no number

Match MatchPath(std::string_view pattern, std::string_view path, int32_t& id) {
  const size_t hole = pattern.find('#');
  if (hole == std::string_view::npos) return pattern == path ? Match::kYes : Match::kNo;
  const std::string_view before = pattern.substr(0, hole);
  const std::string_view after = pattern.substr(hole + 1);
  if (path.size() <= before.size() + after.size()) return Match::kNo;
  if (!path.starts_with(before) || !path.ends_with(after)) return Match::kNo;
  const std::string text(path.substr(hole, path.size() - before.size() - after.size()));
  if (text.find('/') != std::string::npos) return Match::kNo;
  if (text.find_first_not_of("0123456789", text[0] == '-' ? 1 : 0) != std::string::npos || text == "-") {
    return Match::kBadId;
  }
  id = wire::Id(text).value_or(-1);  // a number that no id can have: no such thing
  return Match::kYes;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::string Decoded(std::string_view text) {
  std::string decoded;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    const int high = i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
    const int low = i + 2 < text.size() ? HexDigit(text[i + 2]) : -1;
    if (high < 0 || low < 0) throw Refusal::Malformed("the query is not well encoded");
    decoded += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return decoded;
}

// The value of the first parameter of that name in `name=value` pairs joined by "&", percent-encoded.
std::optional<std::string> Parameter(std::string_view query, std::string_view name) {
  while (!query.empty()) {
    const std::string_view pair = query.substr(0, query.find('&'));
    query.remove_prefix(std::min(pair.size() + 1, query.size()));
    const size_t equals = pair.find('=');
    if (pair.substr(0, equals) != name) continue;
    return equals == std::string_view::npos ? std::string() : Decoded(pair.substr(equals + 1));
  }
  return std::nullopt;
}

int64_t ReadChangeNumber(const std::optional<std::string>& text) {
  if (!text || text->empty() || text->find_first_not_of("0123456789") != std::string::npos) {
    throw Refusal::Malformed("After is not the number of a change");
  }
  int64_t number = 0;
  if (std::from_chars(text->data(), text->data() + text->size(), number).ec != std::errc())
    throw Refusal::ChangesGone();
  return number;
}

HttpReply Changed(int64_t number) {
  return Reply(Envelope('{' + wire::Members({{kChangeNumber, std::to_string(number)}}) + '}'));
}

HttpReply FailuresReply(const std::vector<ShareFailure>& failures) {
  std::string list;
  for (const ShareFailure& failure : failures) {
    wire::AppendObject(list, {{"UserID", failure.userId},
                              {"UserName", failure.userName},
                              {"ErrorModule", failure.reason.module},
                              {"ErrorCode", failure.reason.code}});
  }
  return Reply(Envelope(R"({"ErrorList":{"Error":[)" + list + "]}}"));
}

HttpReply AddedReply(const char* kind, const Added& added) {
  return Reply(Envelope(std::string("{\"") + kind + "\":{" + wire::Members({{"ID", added.id}}) + "}," +
                        wire::Members({{kChangeNumber, std::to_string(added.changeNumber)}}) + '}'));
}

HttpReply AddedView(const Added& added) {
  return AddedReply("View", added);
}

HttpReply AddedGroup(const Added& added) {
  return AddedReply("ViewGroup", added);
}

// One of the editor's operations, and how its outcome is written.
template <class Outcome, class... Parameters, class... Arguments>
HttpReply Edit(const Exchange& exchange, HttpReply (*write)(Outcome),
               std::remove_cvref_t<Outcome> (Editor::*operation)(const Caller&, Parameters...),
               Arguments... arguments) {
  return EditReply(exchange.site,
                   [write, operation, caller = exchange.caller, ... arguments = std::move(arguments)](
                       Editor& editor) mutable { return write((editor.*operation)(caller, std::move(arguments)...)); });
}

HttpReply Login(const Exchange& exchange) {
  const LoginInput login = ReadLoginBody(exchange.request.body);
  const std::optional<User> user = exchange.site.FindUser(login.userName);
  const std::string& peer = exchange.request.network;
  const bool isAdmitted = exchange.guard.Admits(login.userName, peer);
  const int wait = static_cast<int>(exchange.guard.WaitAt(login.userName, peer).count());
  if (isAdmitted && wait > 0) throw Refusal::TooManyFailures(wait);
  if (!isAdmitted || !VerifyPassword(user ? user->passwordHash : std::string(), login.password)) {
    HttpReply reply = RefusedReply(Refusal::BadLogin());
    reply.delay = exchange.guard.Failed(login.userName, peer);
    return reply;
  }
  exchange.guard.Succeeded(login.userName, peer);
  return EditReply(exchange.site, [user = *user, client = login.clientName.substr(0, 256)](Editor& editor) {
    const std::string token = editor.OpenSession(user.id, client);
    return ReplyWith("Session", {{"Token", token}, {"UserID", user.id}, {"UserName", user.name}});
  });
}

HttpReply Logout(const Exchange& exchange) {
  return EditReply(exchange.site, [caller = exchange.caller](Editor& editor) {
    editor.CloseSession(caller);
    return Reply(Envelope("{}"));
  });
}

HttpReply Changes(const Exchange& exchange) {
  const int64_t after = ReadChangeNumber(Parameter(exchange.request.query, "After"));
  const std::optional<std::string> history = Parameter(exchange.request.query, "History");
  HttpReply reply;
  if (history && !exchange.site.IsOfHistory(*history, after)) {
    reply = RefusedReply(Refusal::OtherHistory());
  } else {
    reply.events = exchange.site.OpenFeed(exchange.caller, after);
  }
  reply.headers.emplace_back(kHistory, exchange.site.History());
  return reply;
}

HttpReply GetDefaultView(const Exchange& exchange) {
  const DefaultView view = exchange.site.GetDefaultView(exchange.caller);
  return ReplyWith("Config", {{"Type", view.type}, {"ID", view.id}});
}

HttpReply SetDefaultView(const Exchange& exchange) {
  return EditReply(exchange.site,
                   [caller = exchange.caller, view = ReadDefaultViewBody(exchange.request.body)](Editor& editor) {
                     editor.SetDefaultView(caller, view);
                     return Reply(Envelope("{}"));
                   });
}

HttpReply ListUsers(const Exchange& exchange) {
  std::string list;
  for (const User& user : exchange.site.Users()) {
    wire::AppendObject(
        list,
        {{"ID", user.id}, {"Name", user.name}, {"Online", user.online ? 1 : 0}, {"PTZControlPermission", user.ptz}});
  }
  return Reply(Envelope(R"({"UserList":{"User":[)" + list + "]}}"));
}

HttpReply ListElements(const Exchange& exchange) {
  ElementFilter filter;
  if (const auto type = Parameter(exchange.request.query, "Type")) {
    filter.type = wire::Id(*type);
    if (!filter.type) throw Refusal::Malformed("Type is not a number");
  }
  if (const auto ids = Parameter(exchange.request.query, "IDs")) filter.ids = wire::IdList(*ids);
  return Reply(Envelope(exchange.site.ElementsData(filter)));
}

constexpr Route kRoutes[] = {
    {"POST", "V0/Sessions", Login, false},
    {"DELETE", "V0/Sessions/Current", Logout},
    {"GET", "V0/ViewGroups", [](const Exchange& e) { return ReplyWith(e.site.Groups(e.caller), e.site.History()); }},
    {"POST", "V0/ViewGroups",
     [](const Exchange& e) { return Edit(e, AddedGroup, &Editor::AddGroup, ReadGroupBody(e.request.body)); }},
    {"PUT", "V0/ViewGroups/Move",
     [](const Exchange& e) {
       return Edit(e, Changed, &Editor::MoveGroups, ReadMoveBody(ObjectKind::kGroup, e.request.body));
     }},
    {"PUT", "V0/ViewGroups/#",
     [](const Exchange& e) { return Edit(e, Changed, &Editor::ReplaceGroup, e.id, ReadGroupBody(e.request.body)); }},
    {"DELETE", "V0/ViewGroups/#", [](const Exchange& e) { return Edit(e, Changed, &Editor::DeleteGroup, e.id); }},
    {"GET", "V0/Views", [](const Exchange& e) { return ReplyWith(e.site.Views(e.caller), e.site.History()); }},
    {"POST", "V0/Views",
     [](const Exchange& e) { return Edit(e, AddedView, &Editor::AddView, ReadViewBody(e.request.body)); }},
    {"PUT", "V0/Views/Move",
     [](const Exchange& e) {
       return Edit(e, Changed, &Editor::MoveViews, ReadMoveBody(ObjectKind::kView, e.request.body));
     }},
    {"PUT", "V0/Views/#",
     [](const Exchange& e) { return Edit(e, Changed, &Editor::ReplaceView, e.id, ReadViewBody(e.request.body)); }},
    {"DELETE", "V0/Views/#", [](const Exchange& e) { return Edit(e, Changed, &Editor::DeleteView, e.id); }},
    {"POST", "V1/View/#/Share",
     [](const Exchange& e) { return Edit(e, FailuresReply, &Editor::ShareView, e.id, ReadShareBody(e.request.body)); }},
    {"GET", "V1/View/Default/Config", GetDefaultView},
    {"PUT", "V1/View/Default/Config", SetDefaultView},
    {"GET", "V0/Changes", Changes},
    {"GET", "V0/Users", ListUsers},
    {"GET", "V0/Elements", ListElements},
    {"GET", "V0/Areas", [](const Exchange& e) { return Reply(Envelope(e.site.AreasData())); }},
};

const Route& FindRoute(const HttpRequest& request, int32_t& id) {
  std::string_view path = request.path;
  if (!path.starts_with(kRoot)) throw Refusal::UnknownPath();
  path.remove_prefix(kRoot.size());
  bool otherMethod = false;
  bool badId = false;
  for (const Route& route : kRoutes) {
    const Match match = MatchPath(route.path, path, id);
    if (match == Match::kYes && route.method == request.method) return route;
    otherMethod = otherMethod || match == Match::kYes;
    badId = badId || match == Match::kBadId;
  }
  if (otherMethod) throw Refusal::Malformed("this path does not have that method");
  if (badId) throw Refusal::Malformed("the id in the path is not a number");
  throw Refusal::UnknownPath();
}

}  // namespace

HttpReply Api::Handle(const HttpRequest& request) {
  try {
    return Answer(request);
  } catch (const Refusal& refusal) {
    return Refused(refusal);
  } catch (const std::bad_alloc&) {
    return Refused(Refusal::NoMemory());
  } catch (const SQLite::Exception& e) {
    if (IsBusy(e)) return Refused(Refusal::StoreBusy());
    std::fprintf(stderr, "viewserver: %s %s: %s\n", request.method.c_str(), request.path.c_str(), e.what());
    return Refused(Refusal::InternalError());
  } catch (const std::exception& e) {
    std::fprintf(stderr, "viewserver: %s %s: %s\n", request.method.c_str(), request.path.c_str(), e.what());
    return Refused(Refusal::InternalError());
  }
}

HttpReply Api::Answer(const HttpRequest& request) {
  Exchange exchange{m_site, m_guard, request, {}};
  const Route& route = FindRoute(request, exchange.id);
  if (route.needsSession) exchange.caller = m_site.Authenticate(request.token);
  return route.act(exchange);
}

HttpReply Api::Refused(const Refusal& refusal) {
  return RefusedReply(refusal);
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

}  // namespace server
