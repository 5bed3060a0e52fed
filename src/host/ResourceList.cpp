// SPDX-License-Identifier: Apache-2.0
#include "host/ResourceList.h"

#include "BizShared/NetCommManager.h"
#include "ErrorText/ErrorText.h"
#include "ResourceStore/Element.h"
#include "host/Failure.h"
#include "host/Ids.h"
#include "host/JsonText.h"

namespace host {
namespace {

rapidjson::Document AskServer(const std::string& list) {
  auto request = std::make_shared<NetLink::CClientSendInfo>();
  request->SetVal_Method("GET");
  request->SetVal_URL("/NXAPI/Vantorel/Platform/V0/" + list);
  auto reply = std::make_shared<NetLink::CClientRecvInfo>();
  if (!BizShared::CNetCommManager::Instance().ClientSynSend(reply, request, 0)) {
    throw Failure(kRefused, list + ": " + ErrorText::GetErrorInfoByErrorCode(reply->GetVal_Error_code()));
  }
  rapidjson::Document answer;
  ParseAnswer(reply->GetVal_Receive_Data(), answer);
  const rapidjson::Value& status = ObjectOf(answer, "ResponseStatus");
  if (NumberOf(status, "ErrorCode", -1) != 0) throw Failure(kRefused, "The server does not list its " + list);
  return answer;
}

// Calls `take` with each entry of a list of the server that has an id.
template <class Take>
void ForEach(const std::string& list, const char* outer, const char* inner, const Take& take) {
  const rapidjson::Document answer = AskServer(list);
  const rapidjson::Value& data = ObjectOf(ObjectOf(answer, "ResponseStatus"), "Data");
  for (const rapidjson::Value& entry : ListOf(ObjectOf(data, outer), inner).GetArray()) {
    if (IsOfSomething(std::to_string(IdOf(entry, "ID")))) take(entry);
  }
}

ListedResource Listed(ResourceType type, const rapidjson::Value& entry) {
  const std::string site = std::to_string(IdOf(entry, "SiteID"));
  return {{type, std::to_string(IdOf(entry, "ID"))}, TextOf(entry, "Name"), site == kNoId ? "" : site};
}

std::shared_ptr<ResourceStore::CElement> ElementFrom(const rapidjson::Value& entry) {
  return std::make_shared<ResourceStore::CElement>(IdOf(entry, "ID"), NumberOf(entry, "Type"), TextOf(entry, "Name"),
                                                   IdOf(entry, "SiteID"));
}

}  // namespace

std::vector<ListedResource> ListResources() {
  std::vector<ListedResource> resources;
  std::vector<std::shared_ptr<ResourceStore::CElement>> elements;
  ForEach("Elements", "ElementList", "Element", [&](const rapidjson::Value& entry) {
    resources.push_back(Listed(NumberOf(entry, "Type"), entry));
    elements.push_back(ElementFrom(entry));
  });
  ResourceStore::CElementManager::Instance().PutElements(elements);
  ForEach("Areas", "AreaList", "Area",
          [&](const rapidjson::Value& entry) { resources.push_back(Listed(kAreaType, entry)); });
  return resources;
}

}  // namespace host
