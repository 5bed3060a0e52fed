// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

#include "ViewctlRunner.h"

namespace test {

using Table = QMap<QString, QString>;

// The sample site's file, as one user sees it.
class SampleSite {
 public:
  explicit SampleSite(int user) : m_user(user) {
    m_site = QJsonDocument::fromJson(QByteArray::fromStdString(ReadFile(SITE_FILE))).object();
    for (const QJsonValue& entry : m_site["Users"].toArray()) m_users[entry["ID"].toInt()] = entry["Name"].toString();
    for (const QJsonValue& entry : m_site["ViewGroups"].toArray()) m_groups[entry["ID"].toInt()] = entry.toObject();
  }

  // By the view's id: name, folder, owner, pages and windows, its turning.
  Table Views() const {
    Table views;
    for (const QJsonObject& view : Seen()) {
      int windows = 0;
      for (const QJsonArray& page : Pages(view)) windows += page.size();
      views["v" + QString::number(view["ID"].toInt())] =
          QStringList{view["Name"].toString(), FolderOf(view), OwnerOf(view),
                      QString("%1 pages %2 windows").arg(Pages(view).size()).arg(windows),
                      view["AutoCycle"].toInt() > 0 && !Pages(view).isEmpty()
                          ? "turned every " + QString::number(view["CycleTime"].toInt()) + " s"
                          : ""}
              .join(" | ");
    }
    return views;
  }

  // By kind and id: where each is shown, nothing where it is not.
  Table Uses() const {
    QMap<QString, Table> uses;
    for (const QString& element : NamesOfElements().keys()) uses[element];
    for (const QJsonObject& view : Seen()) {
      int number = 0;
      for (const QJsonArray& page : Pages(view)) {
        ++number;
        for (const QJsonValue& window : page) AddUses(view, number, window.toObject(), uses);
      }
    }
    Table joined;
    for (auto use = uses.begin(); use != uses.end(); ++use) joined[use.key()] = use->values().join("; ");
    return joined;
  }

  Table NamesOfElements() const {
    Table names;
    for (const QJsonValue& element : m_site["Elements"].toArray()) {
      names[Word(element["Type"].toInt()) + " " + QString::number(element["ID"].toInt())] = element["Name"].toString();
    }
    return names;
  }

 private:
  QList<QJsonObject> Seen() const {
    QList<QJsonObject> seen;
    for (const QJsonValue& entry : m_site["Views"].toArray()) {
      const int owner = entry["UserID"].toInt();
      if (owner == -1 || owner == m_user || entry["SharedWith"].toArray().contains(m_user)) seen += entry.toObject();
    }
    return seen;
  }

  // Pages without windows are not answered.
  static QList<QJsonArray> Pages(const QJsonObject& view) {
    QList<QJsonArray> pages;
    for (const QJsonValue& page : view["PlanPages"].toArray()) {
      if (!page["PlanViewItem"].toArray().isEmpty()) pages += page["PlanViewItem"].toArray();
    }
    return pages;
  }

  QString OwnerOf(const QJsonObject& view) const {
    return view["UserID"].toInt() == -1 ? "nobody" : m_users[view["UserID"].toInt()];
  }

  QString FolderOf(const QJsonObject& view) const {
    const int owner = view["UserID"].toInt();
    if (owner != -1 && owner != m_user) return "Shared views";
    QString path, top = owner == -1 ? "Public views" : "My views";
    for (int group = view["ViewGroupID"].toInt(); group != -1; group = m_groups[group]["ParentViewGroupID"].toInt()) {
      path = " / " + m_groups[group]["Name"].toString() + path;
      if (m_groups[group]["IsSharedView"].toInt() == 1) top = "Shared views";
    }
    return top + path;
  }

  static QString Word(int type) {
    static const QMap<int, QString> words = {{1001, "camera"},  {1002, "door"},    {1005, "elevator"},
                                             {1006, "radar"},   {7000, "map"},     {7001, "map"},
                                             {1027, "element"}, {2004, "element"}, {25001, "web page"}};
    return words.value(type, "text");
  }

  static void AddUses(const QJsonObject& view, int page, const QJsonObject& window, QMap<QString, Table>& uses) {
    const auto add = [&](const QString& what, const QString& how) {
      const QString target = "#v" + QString::number(view["ID"].toInt());
      QString& text = uses[what][target];
      text += (text.isEmpty() ? target + ": " : ", ") +
              QString("page %1 window %2").arg(page).arg(window["WindowNo"].toInt()) + how;
    };
    const auto id = [](const QJsonValue& object, const char* key) { return QString::number(object[key].toInt()); };
    // What an old client wrote as a map with a camera's id is a map.
    const bool isOldMap = window["ExtendInfo"].toString().contains("coordinate");
    const int type = isOldMap ? 7001 : window["ResourceType"].toInt();
    const QString address = window["ExtendResource"].toString();
    if (type == 25001 && !address.isEmpty()) add(address, "");
    if (window["ResourceID"].toInt() != -1) add(Word(type) + " " + id(window, "ResourceID"), "");
    if (window["RelateResourceID"].toInt() != -1) {
      add(Word(window["RelateResourceType"].toInt()) + " " + id(window, "RelateResourceID"), " (related)");
    }
    const QJsonObject cycle = window["Cycle"].toObject();
    for (const QJsonValue& pair : cycle["ID"].toArray()) {
      add((cycle["Type"].toInt() == 1 ? "area " : "camera ") + id(pair, "ResourceID"), " (in its cycle)");
    }
  }

  const int m_user;
  QJsonObject m_site;
  QMap<int, QString> m_users;
  QMap<int, QJsonObject> m_groups;
};

}  // namespace test
