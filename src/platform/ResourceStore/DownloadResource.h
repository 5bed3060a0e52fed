// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <vector>

#include "ResourceStore/ElementRecord.h"
#include "ResourceStore/Export.h"
#include "VantBase/Error.h"
#include "VantBase/Singleton.h"

namespace ResourceStore {
class CDownloadResourceStore;
}
extern template class RESOURCESTORE_TEMPLATE_API Vant::Base::CSingleton<ResourceStore::CDownloadResourceStore>;

namespace ResourceStore {

// How a request names what it wants; the view library asks by element id.
enum ExtraRequestType : int { ExtraRequestTypeElementIds = 4 };

// What to download: made for one request, one thread at a time.
class RESOURCESTORE_API CDownloadLogicalResource {
 public:
  CDownloadLogicalResource();
  ~CDownloadLogicalResource();

  void SetVal_extra_ids(const std::set<unsigned>& ids);
  void SetVal_source_type(const std::vector<comm_method::ResourceType>& types);
  void SetVal_extra_request_type(const ExtraRequestType& type);

  const std::set<unsigned>& GetVal_extra_ids() const;
  const std::vector<comm_method::ResourceType>& GetVal_source_type() const;
  ExtraRequestType GetVal_extra_request_type() const;

 private:
  std::set<unsigned> m_extraIds;
  std::vector<comm_method::ResourceType> m_sourceTypes;
  ExtraRequestType m_extraRequestType = ExtraRequestTypeElementIds;
};

// Fetches elements on demand. Any thread.
class RESOURCESTORE_API CDownloadResourceStore : public Vant::Base::CSingleton<CDownloadResourceStore> {
 public:
  ~CDownloadResourceStore();

  // Fetches those of the asked elements that CElementManager does not hold yet, at most 500 ids a request, and waits.
  // False when a request failed; `error` then says why, and what had arrived is kept.
  bool SynIncrementalDownloadLogicalResource(Vant::Base::Error::ErrorCode& error,
                                             std::shared_ptr<CDownloadLogicalResource>& request);

  // Seam for tests: replaces the download; empty restores it.
  using Download = std::function<bool(Vant::Base::Error::ErrorCode&, const CDownloadLogicalResource&)>;
  void SetDownload(Download download);

 private:
  template <class T>
  friend struct Vant::Base::SingletonStorage;
  CDownloadResourceStore();
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace ResourceStore
