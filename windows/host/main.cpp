// SPDX-License-Identifier: Apache-2.0
// A host on Windows without Qt, built from the package alone. It loads the library, uses it and lets it go, several
// times; then it lists, edits and waits until it hears of somebody else's change.
//     host SERVER USER ROUNDS      (the password in VIEWS_PASSWORD)
#include <windows.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <iostream>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "BizShared/NetCommManager.h"
#include "BizShared/UserCommonManager.h"
#include "ErrorText/ErrorText.h"
#include "QorviViewPlugin/Functions.h"
#include "ResourceStore/ViewGroupManager.h"

using ResourceStore::CViewGroupManager;
using Failure = std::runtime_error;

namespace {

constexpr wchar_t kLibrary[] = L"QorviViewPlugin.dll";

class Library {
 public:
  Library() : m_handle(LoadLibraryW(kLibrary)) {
    if (!m_handle) throw Failure("the library cannot be loaded: " + std::to_string(GetLastError()));
    using Any = void (*)();  // which GCC lets become any other function without a warning
    const auto resolve = [this](const char* name) { return reinterpret_cast<Any>(GetProcAddress(m_handle, name)); };
    if (const char* missing = views.Load(resolve)) throw Failure(std::string("the library has no ") + missing);
  }
  ~Library() { FreeLibrary(m_handle); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  QorviViewPlugin::Functions views;

 private:
  HMODULE m_handle;
};

struct Observer : ResourceData::IResourceObserver {
  void UpdateResourceInfos(const Param& param) override {
    std::call_once(once, [&] { first.set_value(param.child_id); });
  }
  std::once_flag once;
  std::promise<std::string> first;
};

void LogIn(const std::string& server, const std::string& user) {
  const char* password = std::getenv("VIEWS_PASSWORD");
  Vant::Base::Error::ErrorCode error;
  BizShared::CNetCommManager::Instance().SetServer(server);
  if (!BizShared::CUserCommonManager::Instance().Login(user, password ? password : "", "host", error)) {
    throw Failure("No login: " + ErrorText::GetErrorInfoByErrorCode(error));
  }
  CViewGroupManager::Instance().Start();
}

void WaitForViews(const QorviViewPlugin::Functions& views) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  std::string response;
  for (auto load : {views.IsInitViewGroupFinish, views.IsInitViewFinish}) {
    while (!load("", response)) {
      if (std::chrono::steady_clock::now() > end) throw Failure("no views: " + response);
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }
}

void Need(bool isDone, const std::string& response) {
  if (!isDone) throw Failure(response);
}

void UseAndLetGo() {
  {
    const Library library;
    library.views.InitEnvir();
    WaitForViews(library.views);
    std::string response;
    Need(library.views.GetPlanGroups(R"({"ParentID":"-1","GroupType":0})", response), response);
    library.views.UnInitEnvir();
  }
  if (GetModuleHandleW(kLibrary)) throw Failure("the library is still in the process");
}

void ListEditAndHear() {
  Observer observer;
  const Library library;
  const QorviViewPlugin::Functions& views = library.views;
  views.InitEnvir();
  WaitForViews(views);
  std::string response;
  Need(views.GetPlanGroups(R"({"ParentID":"-1","GroupType":0})", response), response);
  std::cout << "Groups " << response << std::endl;
  Need(views.AddPlanGroup(R"({"Name":"Made by a host","ParentID":"-1"})", response), response);
  std::cout << "Added " << response << std::endl;
  views.ViewRegisterResourceUpdate(&observer, R"({"ResourceType":16001,"ID":"-1","IsRegister":true})");
  std::cout << "Waiting for a change" << std::endl;
  auto heard = observer.first.get_future();
  if (heard.wait_for(std::chrono::seconds(60)) != std::future_status::ready) throw Failure("nothing was heard");
  std::cout << "Heard of " << heard.get() << std::endl;
  CViewGroupManager::Instance().Stop();  // nothing is called back from here on
  views.UnInitEnvir();
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 4) throw Failure("usage: host SERVER USER ROUNDS");
  LogIn(argv[1], argv[2]);
  const int rounds = std::atoi(argv[3]);
  for (int round = 0; round < rounds; ++round) UseAndLetGo();
  std::cout << "Loaded, used and let go " << rounds << " times" << std::endl;
  ListEditAndHear();
  BizShared::CUserCommonManager::Instance().Logout();
  return 0;
} catch (const Failure& failure) {
  std::cerr << failure.what() << std::endl;
  return 1;
}
