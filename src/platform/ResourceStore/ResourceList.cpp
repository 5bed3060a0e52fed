// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/details/ResourceList.h"

#include <utility>

namespace ResourceStore::details {

namespace {

std::string IdText(uint32_t id) {
  return "{\"ID\":" + std::to_string(id) + "}";
}

// Behind another member; nothing for 0.
void AppendNumber(std::string& text, uint64_t number) {
  if (number != 0) text += ",\"ChangeNumber\":\"" + std::to_string(number) + '"';
}

class DocumentWriter {
 public:
  explicit DocumentWriter(const ListNames& names) : m_names(names) {}
  void Add(std::string_view element) {
    m_text += m_text.empty() ? ListHead(m_names) : ",";
    m_text += element;
  }
  // `element` has members: at least its ID.
  void Add(std::string_view element, uint64_t number, int method) {
    Add(element.substr(0, element.size() - 1));
    AppendNumber(m_text, number);
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
  constexpr size_t kNumberRoom = 40;
  std::string head = ListHead(m_names, m_saysNumber ? m_number : 0);
  std::string tail = ListTail();
  size_t length = head.size() + tail.size();
  for (const Element& element : m_elements) length += element.text.size() + 1 + (element.number != 0 ? kNumberRoom : 0);
  std::string text;
  text.reserve(length);
  text += head;
  bool first = true;
  for (const Element& element : m_elements) {
    if (!element.present) continue;
    if (!std::exchange(first, false)) text += ',';
    text += element.text;
    if (element.number == 0) continue;
    text.pop_back();
    AppendNumber(text, element.number);
    text += '}';
  }
  text += tail;
  m_text = std::make_shared<const std::string>(std::move(text));
  return m_text;
}

void ResourceList::Set(std::string reply, uint64_t number) {
  ResourceList fresh(m_names);
  fresh.m_text = std::make_shared<const std::string>(std::move(reply));
  fresh.m_number = number;
  *this = std::move(fresh);
}

bool ResourceList::Apply(const std::string& change, uint64_t number, ListElement& element) {
  ListDocument document;
  if (!ReadListDocument(change, m_names, true, document) || document.errorCode != 0) {
    m_number = number;
    return false;
  }
  Split();
  m_text.reset();
  for (const ListElement& changed : document.elements) {
    if (!changed.id) continue;
    if (changed.method == 2) {
      Remove(*changed.id);
    } else if (changed.method == 0 || changed.method == 1) {
      Append(changed);
    }
  }
  m_number = number;
  if (!document.elements.empty()) element = std::move(document.elements.back());
  return true;
}

ResourceList::Difference ResourceList::DifferenceTo(ResourceList& newer, Numbers numbers) {
  Split();
  newer.Split();
  const bool keeps = numbers == Numbers::Kept;
  DocumentWriter present(m_names);
  for (const Element& element : newer.m_elements) {
    if (!element.present || !element.id) continue;
    auto old = m_index.find(*element.id);
    if (old != m_index.end() && m_elements[old->second].text == element.text) continue;
    present.Add(element.text, keeps ? element.number : 0, old == m_index.end() ? 0 : 1);
  }
  DocumentWriter removed(m_names);
  for (const Element& element : m_elements) {
    if (!element.present || !element.id || newer.m_index.contains(*element.id)) continue;
    removed.Add(IdText(*element.id), keeps && newer.m_saysNumber ? newer.m_number : 0, 2);
  }
  return {present.Finish(), removed.Finish()};
}

std::string ResourceList::StateOf(uint32_t id, int method) {
  Split();
  DocumentWriter state(m_names);
  const auto place = m_index.find(id);
  if (place == m_index.end()) {
    if (m_saysNumber) state.Add(IdText(id), m_number, 2);
  } else if (const Element& element = m_elements[place->second]; element.number != 0) {
    state.Add(element.text, element.number, method);
  }
  return state.Finish();
}

std::string ResourceList::Nothing() const {
  return ListHead(m_names) + ListTail();
}

void ResourceList::Split() {
  if (m_split) return;
  ListDocument document;
  if (m_text && ReadListDocument(*m_text, m_names, true, document)) {
    m_elements.clear();  // of an attempt for which memory did not suffice
    m_index.clear();
    m_elements.reserve(document.elements.size());
    m_index.reserve(document.elements.size());
    for (const ListElement& element : document.elements) Append(element);
    m_saysNumber = document.saysNumber;
  }
  m_split = true;
}

void ResourceList::Append(const ListElement& element) {
  if (element.id) {
    auto [place, isNew] = m_index.try_emplace(*element.id, m_elements.size());
    if (!isNew) {
      m_elements[place->second].text = element.text;
      m_elements[place->second].number = element.number;
      return;
    }
  }
  try {
    // Without an ID it may have no member that a number could stand behind.
    m_elements.push_back({true, element.id, element.id ? element.number : 0, element.text});
  } catch (...) {
    if (element.id) m_index.erase(*element.id);
    throw;
  }
}

void ResourceList::Remove(uint32_t id) {
  auto place = m_index.find(id);
  if (place == m_index.end()) return;
  m_elements[place->second] = {};
  m_index.erase(place);
  if (++m_removed > m_elements.size() / 2) Compact();
}

void ResourceList::Compact() {
  std::erase_if(m_elements, [](const Element& element) { return !element.present; });
  for (size_t at = 0; at < m_elements.size(); ++at) {
    if (m_elements[at].id) m_index[*m_elements[at].id] = at;
  }
  m_removed = 0;
}

}  // namespace ResourceStore::details
