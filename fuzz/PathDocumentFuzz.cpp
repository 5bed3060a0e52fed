// SPDX-License-Identifier: Apache-2.0
// Path documents under arbitrary paths. A document that has been read and written in any order answers as a fresh one
// of the same text does. Input: the text, 0xFF, then operations: a byte for the kind, the path, 0xFF.
#include <cmath>

#include "FuzzInput.h"
#include "NetLink/RapidJsonProto.h"

namespace {

void RequireSameReads(const NetLink::CRapidJsonProto& document, const NetLink::CRapidJsonProto& fresh,
                      const std::string& path) {
  fuzz::Require(document.get_cnt(path) == fresh.get_cnt(path), "get_cnt differs", path);
  fuzz::Require(document.get_int_v(path, -7) == fresh.get_int_v(path, -7), "get_int_v differs", path);
  fuzz::Require(document.get_v(path, "none") == fresh.get_v(path, "none"), "get_v differs", path);
  fuzz::Require(document.get_bool_v(path, true) == fresh.get_bool_v(path, true), "get_bool_v differs", path);
  const float value = document.get_float_v(path, -7);
  fuzz::Require(!std::isnan(value) && value == fresh.get_float_v(path, -7), "get_float_v differs", path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  NetLink::CRapidJsonProto document;
  if (!document.set_str(input.Text())) {
    fuzz::Require(document.get_str(0) == "{}", "a text that is refused leaves a new document");
  }
  for (int operations = 0; !input.AtEnd() && operations < 100; ++operations) {
    const unsigned int kind = input.Byte() % 4;
    const std::string path = input.Text();
    const std::string before = document.get_str(0);
    if (kind == 0) {
      document.set_v(path, operations);
      fuzz::Require(document.get_str(0) == before || document.get_int_v(path, -1) == operations, "a write was lost",
                    path);
    } else if (kind == 1) {
      document.set_v(path, "text " + path);
      fuzz::Require(document.get_str(0) == before || document.get_v(path, "") == "text " + path, "a write was lost",
                    path);
    } else {
      NetLink::CRapidJsonProto fresh;
      fuzz::Require(fresh.set_str(before), "not JSON", before);
      RequireSameReads(document, fresh, path);
      fuzz::Require(document.get_str(0) == before, "a read changed the document", path);
    }
  }
  return 0;
}
