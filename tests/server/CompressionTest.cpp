// SPDX-License-Identifier: Apache-2.0
// Compressed replies, as libcurl undoes them.
#include "server/http/Compression.h"

#include <curl/curl.h>

#include <random>

#include "../Cases.h"
#include "EchoHandler.h"
#include "TestClient.h"
#include "server/http/HttpServer.h"

namespace server::test {
namespace {

TEST(WantedCodings, IsTheBestOfThoseThatAreAccepted) {
  std::vector<testing_support::Case> cases = testing_support::Cases(TABLES "Codings.txt");
  cases.push_back({"", {""}});
  cases.push_back({" zstd\t; q=0.4 ,\tgzip ;Q=0.5", {"gzip"}});
  for (const auto& [said, wanted] : cases) EXPECT_EQ(NameOf(WantedCodings(said).ofBody), wanted.at(0)) << said;
}

// The text of that size, one that gets short or one that does not.
std::string TextOfSize(size_t size, bool isRandom) {
  std::mt19937 dice(5);
  std::string text;
  text.reserve(size);
  while (text.size() < size) text += isRandom ? static_cast<char>(dice()) : "abcdefghij"[text.size() / 7 % 10];
  return text;
}

class InPieces : public BodySource {
 public:
  explicit InPieces(std::string text) : m_text(std::move(text)) {}
  std::optional<uint64_t> Length() const override { return m_text.size(); }
  bool Next(std::string& chunk) override {
    if (m_at == m_text.size()) return false;
    chunk = m_text.substr(m_at, m_piece++);
    m_at += chunk.size();
    return true;
  }

 private:
  const std::string m_text;
  size_t m_at = 0, m_piece = 0;  // the first piece is empty
};

const std::vector<std::string> kEvents = {"id: 1\ndata: " + TextOfSize(100, false) + "\n\n",
                                          "\n",
                                          ": nothing\n\n",
                                          "data: " + TextOfSize(200000, false) + "\n\n",
                                          TextOfSize(40000, true),
                                          TextOfSize(400000, false),  // longer than what is deflated
                                          "data: end\n\n"};

// Each event once what its listener has is what was given. Ends with the last.
class OneByOne : public EventSource {
 public:
  explicit OneByOne(std::atomic<size_t>& received) : m_received(received) {}
  bool Take(std::vector<Text>& events) override {
    if (m_next == kEvents.size()) return m_received < m_given;
    if (m_received < m_given) return true;
    events.push_back(std::make_shared<std::string>(kEvents[m_next]));
    m_given += kEvents[m_next++].size();
    return true;
  }
  bool KeepAlive() override { return true; }
  bool IsSilent() const override { return true; }
  void OnReady(std::function<void()>) override {}

 private:
  const std::atomic<size_t>& m_received;
  size_t m_next = 0, m_given = 0;
};

// "/text?SIZE" and "/random?SIZE", or in pieces "/text/source?SIZE"; "/events".
class Texts : public Echo {
 public:
  HttpReply Handle(const HttpRequest& request) override {
    HttpReply reply;
    if (request.path == "/events") {
      reply.events = std::make_shared<OneByOne>(received);
      return reply;
    }
    reply.body = TextOfSize(std::stoul(request.query), request.path.starts_with("/random"));
    if (request.path.ends_with("/source")) reply.source = std::make_shared<InPieces>(std::exchange(reply.body, ""));
    return reply;
  }

  std::atomic<size_t> received{0};  // by the client, of what it asks for now
};

struct Fetched {
  std::string head, body;
  long status = 0, connections = 0;
  curl_off_t onTheWire = 0;
};

class CompressionTest : public HttpSideTest<Texts> {
 protected:
  CompressionTest() {
    settings.heartbeat = std::chrono::milliseconds(5);
    Serve();
  }
  ~CompressionTest() override { curl_easy_cleanup(m_easy); }

  // Over one connection, as far as that is kept. Without `wanted` the client says nothing of codings.
  Fetched Fetch(const std::string& target, const char* wanted, const char* method = "GET",
                long version = CURL_HTTP_VERSION_1_1) {
    Fetched fetched;
    handler.received = 0;
    curl_easy_reset(m_easy);
    curl_easy_setopt(m_easy, CURLOPT_URL, ("http://127.0.0.1:" + std::to_string(server->Port()) + target).c_str());
    curl_easy_setopt(m_easy, CURLOPT_PROXY, "");
    curl_easy_setopt(m_easy, CURLOPT_TIMEOUT, 20L);
    curl_easy_setopt(m_easy, CURLOPT_HTTP_VERSION, version);
    curl_easy_setopt(m_easy, CURLOPT_ACCEPT_ENCODING, wanted);
    curl_easy_setopt(m_easy, CURLOPT_CUSTOMREQUEST, method);
    curl_easy_setopt(m_easy, CURLOPT_NOBODY, std::string(method) == "HEAD" ? 1L : 0L);
    curl_easy_setopt(m_easy, CURLOPT_WRITEFUNCTION, &CompressionTest::Receive);
    curl_easy_setopt(m_easy, CURLOPT_HEADERFUNCTION, &CompressionTest::Append);
    curl_easy_setopt(m_easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(m_easy, CURLOPT_HEADERDATA, &fetched.head);
    m_received.clear();
    EXPECT_EQ(curl_easy_perform(m_easy), CURLE_OK) << target;
    fetched.body = std::move(m_received);
    curl_easy_getinfo(m_easy, CURLINFO_RESPONSE_CODE, &fetched.status);
    curl_easy_getinfo(m_easy, CURLINFO_NUM_CONNECTS, &fetched.connections);
    curl_easy_getinfo(m_easy, CURLINFO_SIZE_DOWNLOAD_T, &fetched.onTheWire);
    return fetched;
  }
  static bool Says(const Fetched& fetched, const std::string& line) {
    return fetched.head.find("\r\n" + line + "\r\n") != std::string::npos;
  }

 private:
  static size_t Append(char* data, size_t size, size_t count, void* text) {
    static_cast<std::string*>(text)->append(data, size * count);
    return size * count;
  }

  static size_t Receive(char* data, size_t size, size_t count, void* test) {
    auto& self = *static_cast<CompressionTest*>(test);
    self.m_received.append(data, size * count);
    self.handler.received = self.m_received.size();
    return size * count;
  }

  std::string m_received;
  CURL* m_easy = curl_easy_init();
};

TEST_F(CompressionTest, BodiesOfEverySizeArriveAsTheyAre) {
  ASSERT_EQ(Fetch("/text?1", nullptr).status, 200);  // the connection that all others use
  for (const std::string coding : {"gzip", "zstd"}) {
    for (const char* path : {"/text", "/random", "/text/source"}) {
      for (const size_t size : {size_t{0}, size_t{1023}, size_t{1024}, size_t{16383}, size_t{16384}, size_t{16385},
                                size_t{65535}, size_t{65536}, size_t{65537}, size_t{3} << 20}) {
        const std::string what = coding + " " + path + "?" + std::to_string(size);
        const Fetched fetched = Fetch(path + ("?" + std::to_string(size)), coding.c_str());
        EXPECT_EQ(fetched.status, 200) << what;
        EXPECT_EQ(fetched.connections, 0) << what;
        EXPECT_TRUE(fetched.body == TextOfSize(size, path == std::string("/random"))) << what;
        const bool isCompressed = size >= 1024;
        EXPECT_EQ(Says(fetched, "Content-Encoding: " + coding), isCompressed) << what << fetched.head;
        EXPECT_EQ(Says(fetched, "Transfer-Encoding: chunked"), isCompressed) << what;
        EXPECT_EQ(Says(fetched, "Vary: Accept-Encoding"), isCompressed) << what;
        EXPECT_EQ(Says(fetched, "Content-Length: " + std::to_string(size)), !isCompressed) << what;
        if (isCompressed && path != std::string("/random")) {
          EXPECT_LT(fetched.onTheWire, static_cast<curl_off_t>(100 + size / 8)) << what;
        }
      }
    }
  }
}

// None comes before the client has read the one before it.
TEST_F(CompressionTest, EventsArriveAtOnceAndAsTheyAre) {
  std::string all;
  for (const std::string& event : kEvents) all += event;
  const std::pair<const char*, bool> cases[] = {{nullptr, false},     {"gzip", true}, {"zstd", false},
                                                {"zstd, gzip", true}, {"*", true},    {"identity, gzip;q=0.9", false},
                                                {"gzip;q=0.1", true}};
  for (const auto& [said, isCompressed] : cases) {
    const std::string what = said ? said : "nothing";
    const Fetched fetched = Fetch("/events", said);
    EXPECT_TRUE(fetched.body == all) << what << ' ' << fetched.body.size();
    EXPECT_EQ(Says(fetched, "Content-Encoding: gzip"), isCompressed) << what << fetched.head;
    EXPECT_EQ(fetched.onTheWire < 450000, isCompressed) << what << ' ' << fetched.onTheWire;
  }
  EXPECT_TRUE(Fetch("/events", "gzip", "GET", CURL_HTTP_VERSION_1_0).body == all);
  settings.compresses = false;
  Serve();
  EXPECT_FALSE(Says(Fetch("/events", "gzip"), "Content-Encoding: gzip"));
}

TEST(PackedEventsTest, AnEventIsPackedOnceForAllWhoHearIt) {
  PackedEvents packed;
  const auto event = [](size_t size) { return std::make_shared<const std::string>(TextOfSize(size, true)); };
  std::vector<Text> events, first;
  for (int i = 0; i < 32; ++i) {
    events.push_back(event(100));
    first.push_back(packed.Pack(events.back()));
  }
  for (size_t i = 0; i < events.size(); ++i) EXPECT_EQ(packed.Pack(events[i]), first[i]) << i;
  EXPECT_NE(packed.Pack(event(100)), first[0]) << "the same text, another event";
  EXPECT_NE(packed.Pack(events[0]), first[0]) << "33 others were kept";
  const Text large = event(2 << 20);
  Text once = packed.Pack(large);
  EXPECT_EQ(packed.Pack(large), once) << "two who are sent it";
  const std::weak_ptr<const std::string> sent = once;
  once.reset();
  EXPECT_TRUE(sent.expired()) << "too large to be kept";
  std::weak_ptr<const std::string> kept;
  for (int i = 0; i < 12; ++i) {
    const Text one = packed.Pack(event(100 << 10));
    if (i == 0) kept = one;
  }
  EXPECT_TRUE(kept.expired()) << "a mebibyte is held";
}

TEST_F(CompressionTest, OnlyWhatIsReadByWhoAsksIsCompressed) {
  const auto isPlain = [](const Fetched& fetched, bool varies) {
    return fetched.body == TextOfSize(5000, false) && Says(fetched, "Content-Length: 5000") &&
           fetched.head.find("Content-Encoding") == std::string::npos &&
           Says(fetched, "Vary: Accept-Encoding") == varies;
  };
  EXPECT_TRUE(isPlain(Fetch("/text?5000", nullptr), true)) << "says nothing";
  EXPECT_TRUE(isPlain(Fetch("/text?5000", "br"), true));
  EXPECT_TRUE(isPlain(Fetch("/text?5000", "gzip", "GET", CURL_HTTP_VERSION_1_0), true)) << "knows no chunks";
  EXPECT_TRUE(isPlain(Fetch("/text?5000", "gzip", "POST"), false)) << "an edit";
  EXPECT_TRUE(isPlain(Fetch("/text?5000", "gzip", "PUT"), false)) << "an edit";
  const Fetched head = Fetch("/text?5000", "gzip", "HEAD");
  EXPECT_TRUE(Says(head, "Content-Encoding: gzip")) << head.head;
  EXPECT_TRUE(Says(head, "Transfer-Encoding: chunked")) << head.head;
  EXPECT_EQ(Fetch("/text?5000", "gzip").body, TextOfSize(5000, false)) << "the head had no body behind it";
  settings.compresses = false;
  Serve();
  EXPECT_TRUE(isPlain(Fetch("/text?5000", "gzip"), false)) << "where it is turned off";
}

}  // namespace
}  // namespace server::test
