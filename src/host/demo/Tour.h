// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/demo/Side.h"

namespace host {

// The demo's story over the sample site: maria at work in this process, kenji beside her. Every step checks that what
// it tells is what happened, and throws Failure kRefused where it is not.
class Tour {
 public:
  Tour(OwnSide& maria, Side& kenji, const Plugin& plugin) : m_maria(maria), m_kenji(kenji), m_plugin(plugin) {}

  void Run();

 private:
  void LookAround();
  void AddAndChange();
  void MoveView();
  void Share();
  void OpenAtStart();
  void DeleteView();
  void FolderAndContent();
  bool DrawOne();  // false where nothing draws pictures

  // Makes a call that must answer true, and hands out the answer.
  rapidjson::Document Do(Side& side, const std::string& function, const std::string& request);
  // Waits until that side hears this, telling each notice on the way.
  void Hears(Side& side, const Notice& expected);
  void Require(bool holds, const std::string& what);
  rapidjson::Document Detail(Side& side, const std::string& id);

  OwnSide& m_maria;
  Side& m_kenji;
  const Plugin& m_plugin;
  std::string m_view;  // the view that the story is about
};

}  // namespace host
