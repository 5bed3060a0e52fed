// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/DownloadResource.h"

#include <algorithm>
#include <string>
#include <utility>

#include "BizShared/details/Reply.h"
#include "BizShared/details/ServerRequest.h"
#include "NetLink/RapidJsonProto.h"
#include "ResourceStore/ElementStore.h"
#include "VantBase/SingletonImpl.h"
#include "base/Mutex.h"

template class QORVI_EXPORT_DEFINED Vant::Base::CSingleton<ResourceStore::CDownloadResourceStore>;

namespace ResourceStore {

namespace {

using Vant::Base::Error::ErrorCode;

constexpr size_t kIdsPerRequest = 500;

std::string ElementsUrl(int type, const std::vector<unsigned int>& ids, size_t from, size_t to) {
  std::string url = "V0/Elements?Type=" + std::to_string(type) + "&IDs=";
  for (size_t i = from; i < to; ++i) {
    if (i != from) url += ',';
    url += std::to_string(ids[i]);
  }
  return url;
}

std::vector<std::shared_ptr<CElement>> ReadElements(const NetLink::CRapidJsonProto& reply, int type) {
  std::vector<std::shared_ptr<CElement>> elements;
  BizShared::details::ForEachElement(reply, "ElementList/Element", [&](const std::string& path) {
    const int id = reply.get_int_v(path + "ID", -1);
    if (id == -1) return;
    elements.push_back(std::make_shared<CElement>(static_cast<unsigned int>(id), reply.get_int_v(path + "Type", type),
                                                  reply.get_v(path + "Name", ""),
                                                  static_cast<unsigned int>(reply.get_int_v(path + "SiteID", -1))));
  });
  return elements;
}

bool FetchMissing(int type, const std::set<unsigned int>& ids, ElementStore& store, ErrorCode& error) {
  std::vector<unsigned int> missing;
  for (unsigned int id : ids) {
    if (!store.Find(type, id)) missing.push_back(id);
  }
  for (size_t from = 0; from < missing.size(); from += kIdsPerRequest) {
    size_t to = std::min(from + kIdsPerRequest, missing.size());
    BizShared::details::RequestContext context;
    NetLink::CRapidJsonProto reply;
    if (!BizShared::details::Ask(BizShared::details::GetRequest(ElementsUrl(type, missing, from, to)), context, reply,
                                 error)) {
      return false;
    }
    store.Put(ReadElements(reply, type));
  }
  return true;
}

}  // namespace

CDownloadLogicalResource::CDownloadLogicalResource() = default;
CDownloadLogicalResource::~CDownloadLogicalResource() = default;

void CDownloadLogicalResource::SetVal_extra_ids(const std::set<unsigned>& ids) {
  m_extraIds = ids;
}
void CDownloadLogicalResource::SetVal_source_type(const std::vector<comm_method::ResourceType>& types) {
  m_sourceTypes = types;
}
void CDownloadLogicalResource::SetVal_extra_request_type(const ExtraRequestType& type) {
  m_extraRequestType = type;
}
const std::set<unsigned>& CDownloadLogicalResource::GetVal_extra_ids() const {
  return m_extraIds;
}
const std::vector<comm_method::ResourceType>& CDownloadLogicalResource::GetVal_source_type() const {
  return m_sourceTypes;
}
ExtraRequestType CDownloadLogicalResource::GetVal_extra_request_type() const {
  return m_extraRequestType;
}

// The lock is not held while downloading.
class CDownloadResourceStore::Impl {
 public:
  const std::shared_ptr<ElementStore> m_elements = ElementStore::Shared();
  base::Mutex m_mutex;
  Download m_download GUARDED_BY(m_mutex);
};

CDownloadResourceStore::CDownloadResourceStore() : m_impl(std::make_unique<Impl>()) {}
CDownloadResourceStore::~CDownloadResourceStore() = default;

bool CDownloadResourceStore::SynIncrementalDownloadLogicalResource(ErrorCode& error,
                                                                   std::shared_ptr<CDownloadLogicalResource>& request) {
  if (!request) return true;
  Download download;
  {
    base::MutexLock lock(m_impl->m_mutex);
    download = m_impl->m_download;
  }
  if (download) return download(error, *request);
  for (comm_method::ResourceType type : request->GetVal_source_type()) {
    if (!FetchMissing(type, request->GetVal_extra_ids(), *m_impl->m_elements, error)) return false;
  }
  return true;
}

void CDownloadResourceStore::SetDownload(Download download) {
  base::MutexLock lock(m_impl->m_mutex);
  m_impl->m_download.swap(download);  // the old one is destroyed after the lock is released
}

}  // namespace ResourceStore
