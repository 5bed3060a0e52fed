// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "NetLink/Export.h"

namespace NetLink {

// A JSON document addressed by slash paths: "/Name/Name[n]/Name", n counting from 1. One thread at a time, reads
// included (a document remembers where the last read was, so that consecutive reads below the same element cost
// about a member look-up each).
//
// Addressing. Of members with the same name the first counts. A path is absent when a name is missing, an index is 0,
// past the end or not a number, a segment is empty, or a value on the way is neither object nor (with an index)
// array. Index 1 on a value that is not an array addresses the value itself, so that a lone object reads as a
// list of one. Depth of nesting never costs stack. A new document is an empty object.
//
// Everything but destruction may throw std::bad_alloc; a set_str or set_v that does leaves a new document.
class NETLINK_API CRapidJsonProto {
 public:
  CRapidJsonProto();
  ~CRapidJsonProto();

  // Parses `text`, replacing the document; false when it is not JSON as a whole (anything behind the value, a NUL too,
  // is an error, and so is a number that a double cannot hold), after which the document is new.
  bool set_str(const std::string& text);
  // The document as compact UTF-8 text; members stand in the order first written. Only indent 0 is supported.
  std::string get_str(int indent) const;

  // Number of elements of an array; 0 when absent or null; 1 for anything else.
  int get_cnt(std::string_view path) const;
  // A 32-bit integer; an unsigned one is reinterpreted as signed, a fraction truncated toward zero where it fits; a
  // text that is wholly -?[0-9]+ within -2^31..2^32-1 likewise. Else `defaultValue`.
  int get_int_v(std::string_view path, int defaultValue) const;
  // A text, or a number as its shortest decimal text. Else `defaultValue`.
  std::string get_v(std::string_view path, const std::string& defaultValue) const;
  // A number, or a text that is wholly one. Else `defaultValue`.
  float get_float_v(std::string_view path, float defaultValue) const;
  // true or false. Else `defaultValue`.
  bool get_bool_v(std::string_view path, bool defaultValue) const;

  // Write a value, making objects and array elements on the way, so that a read of the path answers it. A value already
  // there is replaced in its place; one on the way that is no object gives way to an object. The index behind the last
  // element appends one; index 2 on a lone value makes it the first element of an array. A path that is not usable (an
  // empty segment, index 0, an index that would leave a gap) writes nothing at all.
  void set_v(std::string_view path, int value);
  void set_v(std::string_view path, const std::string& value);

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace NetLink
