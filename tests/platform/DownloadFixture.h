// SPDX-License-Identifier: Apache-2.0
// A view download from a scripted site, and the changes that it calls back.
#pragma once

#include "BizShared/NetCommManager.h"
#include "BizShared/UserCommonManager.h"
#include "ResourceStore/ViewGroupManager.h"
#include "ResourceStore/details/StreamTimings.h"
#include "ScriptedSite.h"

namespace testing_support {

using namespace std::chrono_literals;
using BizShared::CNetCommManager;
using BizShared::CUserCommonManager;
using ResourceStore::CViewGroupManager;
using ResourceStore::details::StreamTimings;

inline const std::string kPlatformRoot = "/NXAPI/Vantorel/Platform/";

class DownloadTest : public testing::Test {
 protected:
  DownloadTest() {
    SetTimings({10ms, 40ms, 30s, 20s});
    CNetCommManager::Instance().SetServer(m_site.Url());
    Manager().SetViewsUpdateCallback([this](const std::string& data) { Note("V ", data, TextOfViews()); });
    Manager().SetViewGroupsUpdateCallback([this](const std::string& data) { Note("G ", data, TextOfGroups()); });
  }
  ~DownloadTest() override {
    Manager().Stop();
    Manager().SetViewsUpdateCallback({});
    Manager().SetViewGroupsUpdateCallback({});
    CUserCommonManager::Instance().SetUser(0, {});
    CNetCommManager::Instance().SetToken({});
    CNetCommManager::Instance().SetServer({});
    SetTimings({});
  }

  static CViewGroupManager& Manager() { return CViewGroupManager::Instance(); }
  static void SetTimings(const StreamTimings& timings) { ResourceStore::details::SetStreamTimings(timings); }
  static std::string Text(void (CViewGroupManager::*get)(std::string&) const) {
    std::string text;
    (Manager().*get)(text);
    return text;
  }
  static std::string TextOfViews() { return Text(&CViewGroupManager::GetViewsData); }
  static std::string TextOfGroups() { return Text(&CViewGroupManager::GetViewGroupsData); }

  void Note(const std::string& kind, const std::string& data, const std::string& text) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.push_back(kind + data);
    m_textAtLastCall = text;
  }
  std::vector<std::string> Calls() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls;
  }
  std::string TextAtLastCall() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_textAtLastCall;
  }

  void Load() {
    Manager().Start();
    ASSERT_TRUE(Eventually([] { return Manager().IsViewDownloadSuccess(); }));
  }
  // Waits for that many calls in all and checks the texts of the last ones.
  void ExpectCalls(size_t count, const std::vector<std::string>& last) {
    EXPECT_TRUE(Eventually([&] { return Calls().size() >= count; })) << Calls().size();
    std::vector<std::string> calls = Calls();
    ASSERT_EQ(calls.size(), count);
    EXPECT_EQ(std::vector<std::string>(calls.end() - static_cast<std::ptrdiff_t>(last.size()), calls.end()), last);
  }

  ScriptedSite m_site;
  mutable std::mutex m_mutex;
  std::vector<std::string> m_calls;
  std::string m_textAtLastCall;
};

}  // namespace testing_support
