// SPDX-License-Identifier: Apache-2.0
// The server over loopback, and the library's edits beside bare requests of the same bytes.
#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>
#include <curl/curl.h>
#include <rapidjson/document.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "BizShared/NetCommManager.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"
#include "Report.h"
#include "ResourceStore/ViewGroupManager.h"
#include "SiteData.h"
#include "Suites.h"
#include "ThinWire.h"
#include "server/ViewServer.h"
#include "server/http/Compression.h"

namespace bench {

namespace {

using namespace QorviViewPlugin;

constexpr char kViews[] = "/NXAPI/Vantorel/Platform/V0/Views";

class Folder {
 public:
  Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "qorvi-bench-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no folder for temporary files");
    m_path = name;
  }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  std::string File(const char* name) const { return m_path / name; }

 private:
  std::filesystem::path m_path;
};

// A bare libcurl handle with its connection.
class Curl {
 public:
  Curl(const std::string& url, const std::string& token) : m_url(url), m_easy(curl_easy_init()) {
    m_headers = curl_slist_append(nullptr, ("Authorization: Bearer " + token).c_str());
    m_headers = curl_slist_append(m_headers, "Content-Type: application/json");
    m_headers = curl_slist_append(m_headers, "Expect:");
  }
  ~Curl() {
    curl_slist_free_all(m_headers);
    curl_easy_cleanup(m_easy);
  }
  Curl(const Curl&) = delete;
  Curl& operator=(const Curl&) = delete;

  // The reply's body.
  const std::string& Send(const char* method, const std::string& path, const std::string& body = "") {
    m_reply.clear();
    curl_easy_reset(m_easy);
    curl_easy_setopt(m_easy, CURLOPT_URL, (m_url + path).c_str());
    curl_easy_setopt(m_easy, CURLOPT_CUSTOMREQUEST, method);
    curl_easy_setopt(m_easy, CURLOPT_HTTPHEADER, m_headers);
    curl_easy_setopt(m_easy, CURLOPT_PROXY, "");
    curl_easy_setopt(m_easy, CURLOPT_ACCEPT_ENCODING, m_coding);
    if (!body.empty()) {
      curl_easy_setopt(m_easy, CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
      curl_easy_setopt(m_easy, CURLOPT_POSTFIELDS, body.c_str());
    }
    curl_easy_setopt(m_easy, CURLOPT_WRITEFUNCTION, &Curl::OnBody);
    curl_easy_setopt(m_easy, CURLOPT_WRITEDATA, this);
    Check(curl_easy_perform(m_easy) == CURLE_OK, std::string("request failed: ") + method + " " + path);
    return m_reply;
  }
  // How replies are asked for from now on; null is as they are.
  void Take(const char* coding) { m_coding = coding; }
  // Those of the last reply's body.
  double BytesOnTheWire() const {
    curl_off_t bytes = 0;
    curl_easy_getinfo(m_easy, CURLINFO_SIZE_DOWNLOAD_T, &bytes);
    return static_cast<double>(bytes);
  }
  bool IsAccepted(const char* method, const std::string& path, const std::string& body = "") {
    return Send(method, path, body).find(R"("ErrorCode":0)") != std::string::npos;
  }

 private:
  static size_t OnBody(char* data, size_t size, size_t count, void* self) {
    static_cast<Curl*>(self)->m_reply.append(data, size * count);
    return size * count;
  }

  std::string m_url;
  CURL* m_easy;
  curl_slist* m_headers = nullptr;
  const char* m_coding = nullptr;
  std::string m_reply;
};

template <class Run>
double Seconds(Run run) {
  const auto begin = std::chrono::steady_clock::now();
  run();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// A server with the site, and a session of its user.
struct SeededServer {
  explicit SeededServer(const SiteSize& site) : server(OptionsFor(folder, site)) {
    server.Start();
    const auto session = server.OpenLocalSession("bench");
    if (!session) throw std::runtime_error("no session");
    token = session->token;
  }

  Folder folder;
  server::ViewServer server;
  std::string token;

 private:
  static server::ViewServerOptions OptionsFor(const Folder& folder, const SiteSize& site) {
    std::ofstream(folder.File("seed.json"), std::ios::binary) << SeedText(site);
    server::ViewServerOptions options;
    options.dataFile = folder.File("site.db");
    options.seedFile = folder.File("seed.json");
    return options;
  }
};

void MeasureList(Curl& curl, const SiteSize& site) {
  const std::string list = ViewListText(site);
  curl.Send("GET", kViews);
  AddFigure(
      {"server: list of " + std::string(site.name) + ", " + std::to_string(list.size() / 1000000) + " MB", "", "MB/s"},
      {200, true}, TheOptions().isShort ? 3 : 7, [&] {
        size_t bytes = 0;
        const double seconds = Seconds([&] { bytes = curl.Send("GET", kViews).size(); });
        return static_cast<double>(bytes) / seconds / 1e6;
      });
  Check(curl.Send("GET", kViews) == list, "the server's list is not the seeded site");
}

void MeasureCompression(Curl& curl, const SiteSize& site) {
  const std::string list = ViewListText(site);
  for (const char* coding : {"zstd", "gzip"}) {
    AddFigure({"list of " + std::string(site.name) + " over the wire, " + coding, "its text", "%"}, {6}, 3, [&] {
      curl.Take(coding);
      Check(curl.Send("GET", kViews) == list, std::string("another list through ") + coding);
      return 100 * curl.BytesOnTheWire() / static_cast<double>(list.size());
    });
  }
  curl.Take(nullptr);
  const auto change = std::make_shared<const std::string>(ChangeText(site, 1, 1, 1, 1));
  AddFigure({"change of a view over the wire, gzip", "its text", "%"}, {15}, 1, [&] {
    return 100 * static_cast<double>(server::PackedEvents().Pack(change)->size()) / static_cast<double>(change->size());
  });
}

// From the start of the platform's download to the library's model, through that wire.
double SecondsToModel(const SiteSize& site, const std::string& url, const std::string& token) {
  auto& downloads = ResourceStore::CViewGroupManager::Instance();
  BizShared::CNetCommManager::Instance().SetServer(url);
  BizShared::CNetCommManager::Instance().SetToken(token);
  std::string response;
  const double seconds = Seconds([&] {
    downloads.Start();
    while (!downloads.IsViewDownloadSuccess()) std::this_thread::sleep_for(std::chrono::microseconds(200));
    Check(IsInitViewGroupFinish("", response) && IsInitViewFinish("", response), "the site was not loaded");
  });
  Check(Manager().GetViewByID(site.views) != nullptr, "the last view has not come");
  downloads.Stop();
  ClearViewData();
  BizShared::CNetCommManager::Instance().SetServer("");
  return seconds;
}

// Beside the same with the list as it is.
void MeasureThinWire(const SeededServer& seeded, const SiteSize& site, int megabits) {
  const auto seconds = [&](ThinWire::Replies replies) {
    const ThinWire wire(seeded.server.Url(), megabits * 1e6, replies);
    return SecondsToModel(site, wire.Url(), seeded.token);
  };
  AddFigure(
      {"request to model of " + std::string(site.name) + " at " + std::to_string(megabits) + " Mbit/s, compressed",
       "as it is"},
      {1}, 3, [&] { return seconds(ThinWire::Replies::kAsAsked) / seconds(ThinWire::Replies::kUncompressed); });
}

void MeasureBareInserts(const std::string& file, const std::string& body, int count, const std::string& synchronous) {
  SQLite::Database database(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
  database.exec("PRAGMA journal_mode=WAL");
  database.exec("PRAGMA synchronous=" + synchronous);
  database.exec("CREATE TABLE documents (id INTEGER PRIMARY KEY, text TEXT NOT NULL)");
  SQLite::Statement insert(database, "INSERT INTO documents (text) VALUES (?)");
  AddFigure({"bare SQLite inserts of the same text, each a transaction, synchronous=" + synchronous, "", "/s"}, {}, 5,
            [&] {
              return count / Seconds([&] {
                       for (int n = 0; n < count; ++n) {
                         SQLite::Transaction transaction(database);
                         insert.bindNoCopy(1, body);
                         insert.exec();
                         insert.reset();
                         transaction.commit();
                       }
                     });
            });
}

void MeasureEdits(Curl& curl, const SiteSize& site, const Folder& folder) {
  const int edits = TheOptions().isShort ? 100 : 1000;
  const std::string body = ViewBodyText(MakeView(site, 1));
  // One at a time, each waits for the disk by itself, as an insert with synchronous=FULL does.
  AddFigure({"server: 1,000 edits, each a PUT of a view", "", "/s"}, {1000, true}, 5, [&] {
    return edits / Seconds([&] {
             for (int n = 0; n < edits; ++n) {
               const std::string path = kViews + std::string("/") + std::to_string(1 + n * 13 % site.views);
               Check(curl.IsAccepted("PUT", path, body), "an edit was refused");
             }
           });
  });

  MeasureBareInserts(folder.File("bare.db"), body, edits, "NORMAL");
}

// Edits that wait at the same moment share a transaction, and each is answered once it is safe.
void MeasureEditsOfSeveral(const server::ViewServer& server, const std::string& token, const SiteSize& site,
                           const Folder& folder) {
  constexpr int kClients = 8;
  const int edits = TheOptions().isShort ? 25 : 500;  // of each
  const std::string body = ViewBodyText(MakeView(site, 1));
  AddFigure({"server: 8 clients, 500 edits each", "", "/s"}, {4000, true}, 5, [&] {
    return kClients * edits / Seconds([&] {
             std::vector<std::thread> clients;
             for (int client = 1; client <= kClients; ++client) {
               clients.emplace_back([&, client] {
                 Curl curl(server.Url(), token);
                 const std::string path = kViews + std::string("/") + std::to_string(client);
                 for (int n = 0; n < edits; ++n) Check(curl.IsAccepted("PUT", path, body), "an edit was refused");
               });
             }
             for (std::thread& client : clients) client.join();
           });
  });
  MeasureBareInserts(folder.File("bare-full.db"), body, kClients * edits / 10, "FULL");
}

// What a host would send to change the plan into what it is.
std::string UpdateRequest(unsigned int id, unsigned int groupId) {
  std::string detail;
  Check(GetPlanDetail(R"({"ID":")" + std::to_string(id) + R"("})", detail), "no detail of the view to edit");
  Check(detail.find(R"("GroupID":")" + std::to_string(groupId) + R"(")") != std::string::npos, "the view's group");
  return detail;  // the keys that both have are named alike
}

void MeasureRoundTrip(Curl& curl, const server::ViewServer& server, const std::string& token) {
  const SiteSize site{"edit", 1, 1, 16, 1};
  BizShared::CNetCommManager::Instance().SetServer(server.Url());
  BizShared::CNetCommManager::Instance().SetToken(token);
  ViewInfo view = MakeView(site, 1);
  auto& manager = Manager();
  manager.InsertViewToCache(view, true);
  const std::string request = UpdateRequest(1, view.idViewGroup);
  std::string response;
  Check(UpdatePlan(request, response), "the edit was refused: " + response);
  const std::string body = WriteViewDocument(*manager.GetViewByID(1)->Info());
  const std::string path = kViews + std::string("/1");
  Check(curl.Send("GET", kViews).find(view.strName) != std::string::npos, "the edit has not arrived");
  const auto update = [&] {
    std::string answer;
    Check(UpdatePlan(request, answer), "the edit was refused");
  };
  const auto put = [&] { Check(curl.IsAccepted("PUT", path, body), "the bare edit was refused"); };
  AddRatio({"UpdatePlan of 16 windows over loopback", "bare libcurl, same bytes"}, {1.3}, {update, {}, 1, Watch::kWall},
           {put, {}, 1, Watch::kWall});
  AddRatio({"UpdatePlan of 16 windows over loopback, processor time with the server's", "bare libcurl, same bytes"},
           {1.2}, {update, {}, 1, Watch::kProcess}, {put, {}, 1, Watch::kProcess});
  BizShared::CNetCommManager::Instance().SetServer("");
  ClearViewData();
}

}  // namespace

void ServerSuite() {
  SiteSize site = kMedium;
  if (TheOptions().isShort) site.views /= 10;
  MeasureThinWire(SeededServer(kSmall), kSmall, 10);
  const SeededServer seeded(site);
  const server::ViewServer& server = seeded.server;
  Curl curl(server.Url(), seeded.token);
  MeasureList(curl, site);
  MeasureCompression(curl, site);
  MeasureThinWire(seeded, site, 100);
  MeasureThinWire(seeded, site, 1000);
  MeasureEdits(curl, site, seeded.folder);
  MeasureEditsOfSeveral(server, seeded.token, site, seeded.folder);
  MeasureRoundTrip(curl, server, seeded.token);
}

}  // namespace bench
