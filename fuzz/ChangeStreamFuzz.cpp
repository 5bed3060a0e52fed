// SPDX-License-Identifier: Apache-2.0
// A change stream gives the same events however its bytes are cut into pieces. Input: a byte for the length of the
// pieces, a byte for the limit of an event, the stream.
#include "FuzzInput.h"
#include "ResourceStore/details/ChangeStreamParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const size_t length = data[0] % 16 + 1;
  const size_t limit = data[1] + 1;
  const std::string_view stream(reinterpret_cast<const char*>(data) + 2, size - 2);

  using namespace ResourceStore::details;
  std::vector<ChangeEvent> whole;
  ChangeStreamParser atOnce(limit);
  atOnce.Feed(stream, whole);

  std::vector<ChangeEvent> pieces;
  ChangeStreamParser inPieces(limit);
  for (size_t at = 0; at < stream.size(); at += length) inPieces.Feed(stream.substr(at, length), pieces);

  fuzz::Require(whole.size() == pieces.size(), "the number of events depends on the pieces");
  for (size_t i = 0; i < whole.size(); ++i) {
    fuzz::Require(whole[i].id == pieces[i].id && whole[i].type == pieces[i].type && whole[i].data == pieces[i].data &&
                      whole[i].oversize == pieces[i].oversize,
                  "an event depends on the pieces", whole[i].data);
    fuzz::Require(whole[i].data.size() <= limit, "an event is longer than the limit");
  }
  return 0;
}
