// SPDX-License-Identifier: Apache-2.0
// What windows show: kinds, and the elements and areas of the server.
#pragma once

#include <set>
#include <string>

namespace host {

// The type of a window's resource, or kArea: only cycles go through areas.
using ResourceType = int;
inline constexpr ResourceType kCameraType = 1001;
inline constexpr ResourceType kAreaType = -2;

// "camera", "area", "map"; "type 5001" where several types share a word, or there is none.
std::string KindWord(ResourceType type);
// The type of such a word, or of its number. Throws Failure kUsage, which lists the words, when it is none.
ResourceType KindOfWord(const std::string& word);
// The type that a relation counts by that number; the number itself where it is no known one.
ResourceType TypeOfRelated(int relatedType);

struct Resource {
  ResourceType type = 0;
  std::string id;

  auto operator<=>(const Resource&) const = default;  // NOLINT(modernize-use-nullptr)
};

// Whether the server can be asked for resources of the type, so that one that is not answered is not there.
bool CanBeFetched(ResourceType type);

// The platform's copy of the server's elements and areas, which has what was fetched.
// Throws Failure kRefused with the reason when the server does not answer.
void FetchResources(const std::set<Resource>& resources);
// REQUIRES for the three below: fetched, and CanBeFetched.
bool HasResource(const Resource& resource);
// Empty where there is none.
std::string NameOfResource(const Resource& resource);
std::string SiteOfResource(const Resource& resource);

// Fetches those that can be fetched. Throws Failure kRefused, which names the first that the server does not have.
void RequireOnServer(const std::set<Resource>& resources);

}  // namespace host
