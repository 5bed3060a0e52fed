// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/details/ResourceTexts.h"

#include <utility>

namespace ResourceStore::details {

namespace {

constexpr size_t kCompactFrom = 64;

class DocumentWriter {
 public:
  explicit DocumentWriter(const ListNames& names) : m_names(names) {}
  void Add(std::string_view element) {
    m_text += m_text.empty() ? ListHead(m_names) : ",";
    m_text += element;
  }
  // `element` has members: at least its ID.
  void Add(std::string_view element, int method) {
    Add(element.substr(0, element.size() - 1));
    m_text += ",\"Method\":" + std::to_string(method) + "}";
  }
  std::string Finish() {
    if (!m_text.empty()) m_text += ListTail();
    return std::move(m_text);
  }

 private:
  const ListNames& m_names;
  std::string m_text;
};

}  // namespace

std::shared_ptr<const std::string> ResourceList::Text() {
  if (m_text || !m_split) return m_text;
  std::string head = ListHead(m_names);
  std::string tail = ListTail();
  size_t length = head.size() + tail.size();
  for (const Element& element : m_elements) length += element.text.size() + 1;
  std::string text;
  text.reserve(length);
  text += head;
  bool first = true;
  for (const Element& element : m_elements) {
    if (!element.present) continue;
    if (!std::exchange(first, false)) text += ',';
    text += element.text;
  }
  text += tail;
  m_text = std::make_shared<const std::string>(std::move(text));
  return m_text;
}

void ResourceList::Set(std::string reply) {
  Clear();
  m_text = std::make_shared<const std::string>(std::move(reply));
}

void ResourceList::Clear() {
  m_text.reset();
  m_split = false;
  m_elements.clear();
  m_index.clear();
  m_removed = 0;
}

bool ResourceList::Apply(const std::string& change) {
  ListDocument document;
  if (!ReadListDocument(change, m_names, true, document) || document.errorCode != 0) return false;
  Split();
  for (const ListElement& element : document.elements) {
    if (!element.id) continue;
    if (element.method == 2) {
      Remove(*element.id);
    } else if (element.method == 0 || element.method == 1) {
      Append(element);
    }
  }
  m_text.reset();
  return true;
}

ResourceList::Difference ResourceList::DifferenceTo(ResourceList& newer) {
  Split();
  newer.Split();
  DocumentWriter present(m_names);
  for (const Element& element : newer.m_elements) {
    if (!element.present || !element.id) continue;
    auto old = m_index.find(*element.id);
    if (old == m_index.end()) {
      present.Add(element.text, 0);
    } else if (m_elements[old->second].text != element.text) {
      present.Add(element.text, 1);
    }
  }
  DocumentWriter removed(m_names);
  for (const Element& element : m_elements) {
    if (!element.present || !element.id || newer.m_index.contains(*element.id)) continue;
    removed.Add("{\"ID\":" + std::to_string(*element.id) + "}", 2);
  }
  return {present.Finish(), removed.Finish()};
}

void ResourceList::Split() {
  if (m_split) return;
  m_split = true;
  ListDocument document;
  if (!m_text || !ReadListDocument(*m_text, m_names, true, document)) return;
  m_elements.reserve(document.elements.size());
  m_index.reserve(document.elements.size());
  for (const ListElement& element : document.elements) Append(element);
}

void ResourceList::Append(const ListElement& element) {
  if (element.id) {
    auto [place, isNew] = m_index.try_emplace(*element.id, m_elements.size());
    if (!isNew) {
      m_elements[place->second].text = element.text;
      return;
    }
  }
  m_elements.push_back({true, element.id, element.text});
}

void ResourceList::Remove(uint32_t id) {
  auto place = m_index.find(id);
  if (place == m_index.end()) return;
  m_elements[place->second] = {};
  m_index.erase(place);
  if (++m_removed > kCompactFrom && m_removed > m_elements.size() / 2) Compact();
}

void ResourceList::Compact() {
  size_t kept = 0;
  for (Element& element : m_elements) {
    if (!element.present) continue;
    if (element.id) m_index[*element.id] = kept;
    if (&m_elements[kept] != &element) m_elements[kept] = std::move(element);
    ++kept;
  }
  m_elements.resize(kept);
  m_removed = 0;
}

std::string ResourceTexts::Groups() const {
  std::shared_ptr<const std::string> text;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    text = m_groups.Text();
  }
  return text ? *text : std::string();
}

std::string ResourceTexts::Views() const {
  std::shared_ptr<const std::string> text;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    text = m_views.Text();
  }
  return text ? *text : std::string();
}

void ResourceTexts::Set(std::string groups, std::string views, bool finished) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_groups.Set(std::move(groups));
  m_views.Set(std::move(views));
  m_finished = finished;
}

void ResourceTexts::Clear() {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_groups.Clear();
  m_views.Clear();
  m_finished = false;
}

bool ResourceTexts::ApplyGroups(const std::string& change) {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_groups.Apply(change);
}

bool ResourceTexts::ApplyViews(const std::string& change) {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_views.Apply(change);
}

void ResourceTexts::Replace(std::string groups, std::string views, ResourceList::Difference& groupsDifference,
                            ResourceList::Difference& viewsDifference) {
  ResourceList newGroups(kViewGroupNames);
  ResourceList newViews(kViewNames);
  newGroups.Set(std::move(groups));
  newViews.Set(std::move(views));
  std::lock_guard<std::mutex> lock(m_mutex);
  groupsDifference = m_groups.DifferenceTo(newGroups);
  viewsDifference = m_views.DifferenceTo(newViews);
  m_groups = std::move(newGroups);
  m_views = std::move(newViews);
}

}  // namespace ResourceStore::details
