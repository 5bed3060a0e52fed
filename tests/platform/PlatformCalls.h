// SPDX-License-Identifier: Apache-2.0
// Requests through the platform's transport, and what became of them as texts.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "BizShared/NetCommManager.h"
#include "ScriptedServer.h"

namespace testing_support {

// "<main>/<sub>".
inline std::string Numbers(const Vant::Base::Error::ErrorCode& error) {
  return std::to_string(error.GetMainError()) + "/" + std::to_string(error.GetSubError());
}

// "<main>/<sub> <body>", in front of it "failed " where nothing was answered.
inline std::string Send(const std::string& method, const std::string& url, const std::string& body = {},
                        unsigned long timeout = 0, const std::string& requestData = {}) {
  auto send = std::make_shared<NetLink::CClientSendInfo>();
  send->SetVal_Method(method);
  send->SetVal_URL(url);
  send->SetVal_send_data(body);
  send->SetVal_Request_Data(requestData);
  send->SetVal_Timeout(timeout);
  auto recv = std::make_shared<NetLink::CClientRecvInfo>();
  const bool answered = BizShared::CNetCommManager::Instance().ClientSynSend(recv, send, 0);
  return (answered ? "" : "failed ") + Numbers(recv->GetVal_Error_code()) + " " + recv->GetVal_Receive_Data();
}

// The transport before a scripted server.
class ServingTest : public testing::Test {
 protected:
  ~ServingTest() override { Net().SetServer({}); }
  static BizShared::CNetCommManager& Net() { return BizShared::CNetCommManager::Instance(); }
  void Serve(ScriptedServer::Handler handler) {
    m_server = std::make_unique<ScriptedServer>(std::move(handler));
    Net().SetServer(m_server->Url());
  }
  std::unique_ptr<ScriptedServer> m_server;
};

}  // namespace testing_support
