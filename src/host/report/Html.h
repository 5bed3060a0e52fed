// SPDX-License-Identifier: Apache-2.0
// Texts as parts of an HTML page. What they make is well-formed XML too.
#pragma once

#include <string>
#include <string_view>

namespace host {

// What is not ours, names above all: safe to show (drawing::SafeText), and text wherever it stands, in attributes as
// well.
std::string Html(std::string_view text);
// The same of what drawing has made safe before.
std::string HtmlLine(std::string_view text);
// A page in words (drawing::InWords). Each part keeps its reading direction to itself.
std::string HtmlWords(std::string_view text);

// A name, which does not disturb the reading direction of what stands around it; "(no name)" where there is none.
std::string HtmlName(std::string_view name);

// <tag>content</tag>; `tag` may have attributes.
std::string Tagged(const std::string& tag, const std::string& content);

}  // namespace host
