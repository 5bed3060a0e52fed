// SPDX-License-Identifier: Apache-2.0
#include "host/demo/Side.h"

#include <QElapsedTimer>

namespace host {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kAnswerLimit{15000};
constexpr int kEndLimit = 5000;

Notice ReadNotice(const rapidjson::Value& value) {
  Notice notice;
  notice.id = TextOf(value, "id");
  notice.enum_state = NumberOf(value, "enum_state");
  notice.name = TextOf(value, "name");
  notice.reserved = NumberOf(value, "reserved");
  notice.child_id = TextOf(value, "child_id");
  notice.child_type = NumberOf(value, "child_type");
  notice.other_change_info = TextOf(value, "other_change_info");
  return notice;
}

template <class Queue>
std::optional<Notice> TakeFirst(Queue& queue) {
  if (queue.empty()) return std::nullopt;
  Notice notice = queue.front();
  queue.pop_front();
  return notice;
}

}  // namespace

bool OwnSide::Call(const std::string& function, const std::string& request, rapidjson::Document& response) {
  std::string text;
  const bool done = m_plugin.Ask(function, request, text);
  ParseAnswer(text, response);
  return done;
}

void OwnSide::Observe(int type, const std::string& id) {
  m_plugin.Register(&m_queue, ObjectText().Add("ResourceType", type).Add("ID", id).Add("IsRegister", true).Text());
}

std::optional<Notice> OwnSide::NextNotice(milliseconds limit) {
  if (m_taken.empty()) {
    for (Notice& notice : m_queue.Take(limit)) m_taken.push_back(std::move(notice));
  }
  return TakeFirst(m_taken);
}

ScriptSide::ScriptSide(const std::string& name, const std::string& password, const std::string& url,
                       const std::string& plugin)
    : Side(name) {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  // Not an argument, which others on the machine could read.
  environment.insert("VIEWCTL_PASSWORD", QString::fromStdString(password));
  m_process.setProcessEnvironment(environment);
  m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  m_process.start(QCoreApplication::applicationFilePath(),
                  {"--server", QString::fromStdString(url), "--user", QString::fromStdString(name), "--plugin",
                   QString::fromStdString(plugin), "script"});
  const rapidjson::Document answer = Ask(R"({"load":true})");
  if (!FlagOf(answer, "result")) throw Failure(kRefused, name + "'s views were not loaded");
}

ScriptSide::~ScriptSide() {
  m_process.closeWriteChannel();
  if (m_process.state() == QProcess::NotRunning || m_process.waitForFinished(kEndLimit)) return;
  m_process.kill();
  m_process.waitForFinished(kEndLimit);
}

bool ScriptSide::Call(const std::string& function, const std::string& request, rapidjson::Document& response) {
  ObjectText line;
  line.Add("call", function);
  if (!request.empty()) line.AddRaw("request", request);
  const rapidjson::Document answer = Ask(line.Text());
  ParseJson(TextOf(answer, "response"), response);
  return FlagOf(answer, "result");
}

void ScriptSide::Observe(int type, const std::string& id) {
  Ask(ObjectText().AddRaw("observe", ObjectText().Add("ResourceType", type).Add("ID", id).Text()).Text());
}

std::optional<Notice> ScriptSide::NextNotice(milliseconds limit) {
  rapidjson::Document answer;
  if (m_notices.empty()) ReadLine(limit, answer);
  return TakeFirst(m_notices);
}

rapidjson::Document ScriptSide::Ask(const std::string& line) {
  m_process.write((line + "\n").c_str());
  rapidjson::Document answer;
  do {
    if (!ReadLine(kAnswerLimit, answer)) throw Failure(kRefused, "The second viewctl, for " + Name() + ", went silent");
  } while (answer.IsNull());
  return answer;
}

bool ScriptSide::ReadLine(milliseconds limit, rapidjson::Document& answer) {
  QElapsedTimer waited;
  waited.start();
  while (!m_process.canReadLine()) {
    const qint64 left = limit.count() - waited.elapsed();
    if (left <= 0 || !m_process.waitForReadyRead(static_cast<int>(left))) return m_process.canReadLine();
  }
  const QByteArray line = m_process.readLine();
  ParseJson({line.constData(), static_cast<size_t>(line.size())}, answer);
  const rapidjson::Value& notice = ObjectOf(answer, "notice");
  if (notice.MemberCount() > 0) {
    m_notices.push_back(ReadNotice(notice));
    answer.SetNull();
  }
  return true;
}

}  // namespace host
