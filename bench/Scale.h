// SPDX-License-Identifier: Apache-2.0
// What things cost over the size of the site, with their peers: as a table and as a picture, both of the samples that
// the growth suite has kept.
#pragma once

#include <string>

namespace bench {

// The keys under which the growth suite keeps its times end in this.
std::string ViewCount(unsigned int views);

// Prints the table and writes the picture to the file; nothing where nothing was measured. Answers whether the file
// could be written.
bool TellScale(const std::string& file);

}  // namespace bench
