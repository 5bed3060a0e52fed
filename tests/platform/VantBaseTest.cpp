// SPDX-License-Identifier: Apache-2.0
// Base services: log, Base64, singletons.
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "VantBase/Base64.h"
#include "VantBase/Log.h"
#include "VantBase/SingletonImpl.h"

namespace {

using namespace Vant::Base::Encrypt;
using Vant::Base::details::IOrlFormatLog;

using Lines = std::vector<std::string>;  // "<level> <module> <text>"

class RecordingSink : public Vant::Base::ILogSink {
 public:
  explicit RecordingSink(int lowest) : m_lowest(lowest) {}
  bool Wants(int level) const override { return level >= m_lowest; }
  void Write(int level, const char* module, const std::string& text) override {
    if (text == "throw") throw std::runtime_error("disk full");
    std::lock_guard<std::mutex> lock(m_mutex);
    m_lines.push_back(std::to_string(level) + " " + module + " " + text);
  }
  Lines Written() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines;
  }

 private:
  const int m_lowest;
  mutable std::mutex m_mutex;
  Lines m_lines;
};

class Log : public testing::Test {
 protected:
  std::shared_ptr<RecordingSink> Record(int lowest) {
    auto sink = std::make_shared<RecordingSink>(lowest);
    Vant::Base::SetLogSink(sink);
    return sink;
  }
  void TearDown() override { Vant::Base::SetLogSink(nullptr); }
};

TEST_F(Log, HandsFormattedLinesOfWantedLevelsToTheSink) {
  const auto sink = Record(4);
  IOrlFormatLog(5, "Errors", "[%s] %d%% of %s[%s(%d)]", "F", -3, "\xC3\xA9\xFF", "file.cpp", 7);
  IOrlFormatLog(3, "Info", "%s", "unwanted");
  IOrlFormatLog(4, nullptr, "plain");
  EXPECT_NO_THROW(IOrlFormatLog(5, "Errors", "throw")) << "a sink that throws disturbs nobody";
  EXPECT_EQ(sink->Written(), (Lines{"5 Errors [F] -3% of \xC3\xA9\xFF[file.cpp(7)]", "4  plain"}));
}

TEST_F(Log, TextsOfAnyLengthArriveWhole) {
  const auto sink = Record(0);
  IOrlFormatLog(3, "Info", "%s", "");
  EXPECT_EQ(sink->Written(), Lines{"3 Info "});
  for (const std::size_t size : {0U, 1022U, 1023U, 1024U, 1025U, 20000000U}) {
    const std::string text(size, 'x');
    IOrlFormatLog(3, "Info", "%s|%d", text.c_str(), 1);
    EXPECT_TRUE(sink->Written().back() == "3 Info " + text + "|1") << size;
  }
}

TEST_F(Log, ByDefaultErrorsGoToStderrAndNothingElse) {
  testing::internal::CaptureStderr();
  IOrlFormatLog(4, "Info", "not shown");
  IOrlFormatLog(5, "Errors", "shown {} %d", 42);
  const std::string shown = testing::internal::GetCapturedStderr();
  EXPECT_NE(shown.find("Errors shown {} 42"), std::string::npos) << shown;
  EXPECT_EQ(shown.find("not shown"), std::string::npos) << shown;
}

TEST_F(Log, SinksMayBeReplacedWhileOthersLog) {
  std::vector<std::shared_ptr<RecordingSink>> sinks{Record(5)};
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([](const std::stop_token& end) {
      while (!end.stop_requested()) IOrlFormatLog(5, "Errors", "%d", 1);
    });
  }
  for (int i = 0; i < 200; ++i) sinks.push_back(Record(5));
  while (sinks.back()->Written().empty()) std::this_thread::yield();
}

TEST(Base64, EncodesAndDecodesTheVectorsOfItsStandard) {
  const std::pair<const char*, const char*> cases[] = {{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foobar", "Zm9vYmFy"}};
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(Base64Encode(bytes), text);
    EXPECT_EQ(Base64Decode(text), bytes);
  }
  std::string all;
  for (int i = 0; i < 1000; ++i) all += static_cast<char>(i * 7);
  EXPECT_EQ(Base64Decode(Base64Encode(all)), all);
  // Decoding stops at the first character outside the alphabet.
  const std::pair<const char*, const char*> others[] = {{"Zm9v-Zm9v", "foo"}, {"Zm9v\nZm9v", "foo"},  {"Zg==Zm9v", "f"},
                                                        {"Zm8", "fo"},        {"Zm9vZ", "foo"},       {"_Zm9v", ""},
                                                        {" Zm9v", ""},        {"Zm9v\xC3\xA9", "foo"}};
  for (const auto& [text, bytes] : others) EXPECT_EQ(Base64Decode(text), bytes) << text;
}

std::atomic<int> madeCount{0};

class Counted : public Vant::Base::CSingleton<Counted> {
 private:
  friend struct Vant::Base::SingletonStorage<Counted>;
  Counted() {
    ++madeCount;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
};

TEST(Singleton, IsMadeOnceHoweverManyThreadsAskFirst) {
  std::vector<std::thread> threads;
  std::vector<Counted*> instances(8);
  for (Counted*& instance : instances) threads.emplace_back([&instance] { instance = &Counted::Instance(); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(madeCount, 1);
  EXPECT_EQ(instances, std::vector<Counted*>(8, &Counted::Instance()));
}

}  // namespace
