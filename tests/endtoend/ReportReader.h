// SPDX-License-Identifier: Apache-2.0
// A report read back. Its pages are well-formed XML but for the script, so a plain reader finds every element.
#pragma once

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QXmlStreamReader>
#include <vector>

namespace test {

struct Node {
  QString name;
  QXmlStreamAttributes attributes;
  QString text;  // with that of what it holds, drawings left out
  size_t parent = 0;
  size_t end = 0;  // behind the last one in it

  QString Get(const char* key) const { return attributes.value(QLatin1String(key)).toString(); }
  bool Is(const QString& tag, const QString& aClass) const {
    return (tag.isEmpty() || tag == name) && (aClass.isEmpty() || Get("class").split(' ').contains(aClass));
  }
};

class ReportReader {
 public:
  explicit ReportReader(const std::string& html) {
    QString text = QString::fromStdString(html);
    static const QRegularExpression script("<script>(.*)</script>", QRegularExpression::DotMatchesEverythingOption);
    m_script = script.match(text).captured(1);
    QXmlStreamReader reader(text.replace(script, "<script/>"));
    while (!reader.atEnd()) Take(reader);
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString() << " in line " << reader.lineNumber();
  }

  // The elements that "name", ".class" or "name.class" fits, in their order.
  std::vector<const Node*> All(const QString& wanted, const Node* within = nullptr) const {
    const QString tag = wanted.section('.', 0, 0), aClass = wanted.section('.', 1);
    std::vector<const Node*> found;
    const size_t end = within ? within->end : m_nodes.size();
    for (size_t i = within ? Index(*within) + 1 : 0; i < end; ++i) {
      if (m_nodes[i].Is(tag, aClass)) found.push_back(&m_nodes[i]);
    }
    return found;
  }
  // The text of the only one; "" and a failure where there are others or none.
  QString Text(const QString& wanted, const Node* within = nullptr) const {
    const auto found = All(wanted, within);
    EXPECT_EQ(found.size(), 1u) << wanted.toStdString();
    return found.size() == 1 ? found[0]->text.simplified() : QString();
  }
  const Node* Above(const Node& node, const QString& tag, const QString& aClass) const {
    const Node* above = &node;
    while (above->parent != Index(*above)) {
      above = &m_nodes[above->parent];
      if (above->Is(tag, aClass)) return above;
    }
    return nullptr;
  }
  const std::vector<Node>& Everything() const { return m_nodes; }
  const QString& Script() const { return m_script; }

 private:
  size_t Index(const Node& node) const { return static_cast<size_t>(&node - m_nodes.data()); }

  void Take(QXmlStreamReader& reader) {
    switch (reader.readNext()) {
      case QXmlStreamReader::StartElement:
        m_nodes.push_back({reader.name().toString(), reader.attributes(), {}, m_open.empty() ? 0 : m_open.back(), 0});
        m_open.push_back(m_nodes.size() - 1);
        break;
      case QXmlStreamReader::EndElement:
        m_nodes[m_open.back()].end = m_nodes.size();
        m_open.pop_back();
        break;
      case QXmlStreamReader::Characters:
        for (size_t i = m_open.size(); i-- > 0 && m_nodes[m_open[i]].name != "svg";) {
          m_nodes[m_open[i]].text += reader.text();
        }
        break;
      default:
        break;
    }
  }

  std::vector<Node> m_nodes;
  std::vector<size_t> m_open;
  QString m_script;
};

}  // namespace test
