// SPDX-License-Identifier: Apache-2.0
// A view as a text that a person edits:
//
//   {
//     "Name": "Forecourt",
//     "AutoCycle": 1,
//     "RoundTime": 20,
//     "PlanPages": [...]
//   }
//
// "PlanPages" is in the form of an export. Lines that begin with // are notes of viewctl, and no part of it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/edit/EditableView.h"

namespace host {

std::string ToEditText(const EditableView& view);

struct EditFault {
  size_t line = 1;
  std::string text;
};

// REQUIRES for the rest: a text without notes.
std::string WithoutNotes(std::string_view text);
// What is wrong with it, by its lines; empty where it can be saved. A window's number may stand on a page as often as
// on one of the pages of `before`.
std::vector<EditFault> FaultsInEdit(const std::string& text, const EditableView& before);
// The text with a note below each line that has a fault.
std::string WithNotes(const std::string& text, const std::vector<EditFault>& faults);
// The view as the text has it; what the text does not say is as in `before`. REQUIRES: no faults.
EditableView FromEditText(const std::string& text, const EditableView& before);

}  // namespace host
