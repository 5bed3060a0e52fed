// SPDX-License-Identifier: Apache-2.0
// Downloads: what is downloaded, a fixture that downloads views from a scripted site, and an observer of the users.
#pragma once

#include "BizShared/NetCommManager.h"
#include "BizShared/UserCommonManager.h"
#include "PlatformCalls.h"
#include "ResourceStore/OrlUserManager.h"
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

inline CViewGroupManager& Manager() {
  return CViewGroupManager::Instance();
}
inline std::string TextOfViews() {
  std::string text;
  Manager().GetViewsData(text);
  return text;
}
inline std::string TextOfGroups() {
  std::string text;
  Manager().GetViewGroupsData(text);
  return text;
}
// False where it takes too long.
inline bool DownloadViews() {
  Manager().Start();
  return Eventually([] { return Manager().IsViewDownloadSuccess(); });
}
// Ends download and session, and forgets all that was set.
inline void EndDownloads() {
  Manager().Stop();
  Manager().SetViewsUpdateCallback({});
  Manager().SetViewGroupsUpdateCallback({});
  CUserCommonManager::Instance().Logout();
  CNetCommManager::Instance().SetServer({});
  ResourceStore::details::SetStreamTimings({});
}

// Notes how downloads of the users end.
class UserListener : public ResourceStore::IOrlUserObserver {
 public:
  UserListener() { ResourceStore::COrlUserManager::Instance().RegisterObserver(this); }
  ~UserListener() { ResourceStore::COrlUserManager::Instance().SyncUnregisterObserver(this); }
  void OnUserListNotify(ResourceStore::CIOrlUserObserverParam& param) override {
    if (m_during) m_during();
    std::lock_guard<std::mutex> lock(m_mutex);
    m_ends.push_back("state " + std::to_string(param.GetVal_enumState()) + " " +
                     Numbers(param.GetVal_stru_error_code()));
  }
  std::vector<std::string> Ends() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_ends;
  }
  size_t Count() const { return Ends().size(); }
  std::function<void()> m_during;

 private:
  mutable std::mutex m_mutex;
  std::vector<std::string> m_ends;
};

class DownloadTest : public testing::Test {
 protected:
  DownloadTest() {
    SetTimings({10ms, 40ms, 30s, 20s});
    CNetCommManager::Instance().SetServer(m_site.Url());
    Manager().SetViewsUpdateCallback([this](const std::string& data) { Note("V ", data, TextOfViews()); });
    Manager().SetViewGroupsUpdateCallback([this](const std::string& data) { Note("G ", data, TextOfGroups()); });
  }
  ~DownloadTest() override { EndDownloads(); }

  static void SetTimings(const StreamTimings& timings) { ResourceStore::details::SetStreamTimings(timings); }

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

  static void Load() { ASSERT_TRUE(DownloadViews()); }
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
