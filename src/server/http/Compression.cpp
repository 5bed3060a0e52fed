// SPDX-License-Identifier: Apache-2.0
#include "server/http/Compression.h"

#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <array>
#include <boost/beast/core/string.hpp>
#include <charconv>
#include <new>
#include <utility>

#include "server/http/RequestHead.h"

namespace server {

namespace {

// The lowest level at which a list comes to a twentieth of its text or little more.
constexpr int kGzipLevel = 6;
constexpr int kZstdLevel = 1;
// 256 KiB: with less a list takes a quarter more; a reply under way holds a mebibyte with it.
constexpr int kZstdWindow = 18;
constexpr size_t kTextPiece = size_t{64} << 10;  // of a text, between which other connections have their turn
constexpr int kDeflateWindow = 15;               // 32 KiB
// Enough that listeners who hear a change one after another find what has been compressed for the first of them.
constexpr size_t kKeptEvents = 32;
constexpr size_t kKeptEventBytes = size_t{1} << 20;
// Some milliseconds, in which the thread serves nobody else.
constexpr size_t kLongestDeflated = size_t{256} << 10;

// Cuts off what stands before the separator, which goes too. (Beast's ext_list gives an entry at the end that has no
// parameters those of the entry before it.)
std::string_view CutOff(std::string_view& text, char separator) {
  const size_t end = std::min(text.find(separator), text.size());
  const std::string_view before = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return Trimmed(before);
}

// 1 where there is none, 0 where it is no number from 0 to 1.
double QualityOf(std::string_view parameters) {
  while (!parameters.empty()) {
    std::string_view value = CutOff(parameters, ';');
    if (!boost::beast::iequals(CutOff(value, '='), "q")) continue;
    double quality = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), quality);
    const bool isQuality = error == std::errc() && end == value.data() + value.size() && quality >= 0 && quality <= 1;
    return isQuality ? quality : 0;
  }
  return 1;
}

struct Qualities {
  double gzip, zstd, asItIs;
};

Qualities QualitiesOf(std::string_view acceptEncoding) {
  constexpr double kUnsaid = -1;
  Qualities said{kUnsaid, kUnsaid, kUnsaid};
  double others = 0;
  while (!acceptEncoding.empty()) {
    std::string_view entry = CutOff(acceptEncoding, ',');
    const std::string_view name = CutOff(entry, ';');
    const auto is = [&name](const char* coding) { return boost::beast::iequals(name, coding); };
    if (is("gzip") || is("x-gzip")) said.gzip = QualityOf(entry);
    if (is("zstd")) said.zstd = QualityOf(entry);
    if (is("identity")) said.asItIs = QualityOf(entry);
    if (name == "*") others = QualityOf(entry);
  }
  for (double* quality : {&said.gzip, &said.zstd, &said.asItIs}) {
    if (*quality == kUnsaid) *quality = others;
  }
  return said;
}

class Compressor {
 public:
  Compressor() = default;
  virtual ~Compressor() = default;
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;

  // Appends what there is of the compressed text with this piece, all of it with the last one. Throws std::bad_alloc.
  virtual void Add(std::string_view piece, bool isLast, std::string& compressed) = 0;

 protected:
  std::array<char, size_t{16} << 10> m_buffer{};
};

class GzipCompressor : public Compressor {
 public:
  GzipCompressor() {
    constexpr int kGzipWindow = kDeflateWindow + 16;  // with gzip's head and sum around
    if (deflateInit2(&m_stream, kGzipLevel, Z_DEFLATED, kGzipWindow, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
      throw std::bad_alloc();
    }
  }
  ~GzipCompressor() override { deflateEnd(&m_stream); }

  void Add(std::string_view piece, bool isLast, std::string& compressed) override {
    m_stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece.data()));
    m_stream.avail_in = static_cast<uInt>(piece.size());
    do {
      m_stream.next_out = reinterpret_cast<Bytef*>(m_buffer.data());
      m_stream.avail_out = static_cast<uInt>(m_buffer.size());
      deflate(&m_stream, isLast ? Z_FINISH : Z_NO_FLUSH);
      compressed.append(m_buffer.data(), m_buffer.size() - m_stream.avail_out);
    } while (m_stream.avail_out == 0);
  }

 private:
  z_stream m_stream{};
};

class ZstdCompressor : public Compressor {
 public:
  ZstdCompressor() : m_context(ZSTD_createCCtx()) {
    if (!m_context) throw std::bad_alloc();
    ZSTD_CCtx_setParameter(m_context, ZSTD_c_compressionLevel, kZstdLevel);
    ZSTD_CCtx_setParameter(m_context, ZSTD_c_windowLog, kZstdWindow);
    ZSTD_CCtx_setParameter(m_context, ZSTD_c_checksumFlag, 1);  // else damage might pass for another text
  }
  ~ZstdCompressor() override { ZSTD_freeCCtx(m_context); }

  void Add(std::string_view piece, bool isLast, std::string& compressed) override {
    ZSTD_inBuffer in{piece.data(), piece.size(), 0};
    bool isThrough = false;
    while (!isThrough) {
      ZSTD_outBuffer out{m_buffer.data(), m_buffer.size(), 0};
      const size_t left = ZSTD_compressStream2(m_context, &out, &in, isLast ? ZSTD_e_end : ZSTD_e_continue);
      if (ZSTD_isError(left)) throw std::bad_alloc();  // nothing else can go wrong
      compressed.append(m_buffer.data(), out.pos);
      isThrough = isLast ? left == 0 : in.pos == in.size;
    }
  }

 private:
  ZSTD_CCtx* const m_context;
};

// That ends where a byte does and needs nothing of what stood before it.
std::string DeflatedAlone(const std::string& text) {
  z_stream stream{};
  const int level = text.size() > kLongestDeflated ? Z_NO_COMPRESSION : kGzipLevel;
  if (deflateInit2(&stream, level, Z_DEFLATED, -kDeflateWindow, 8, Z_DEFAULT_STRATEGY) != Z_OK) throw std::bad_alloc();
  const std::unique_ptr<z_stream, int (*)(z_stream*)> end(&stream, deflateEnd);
  constexpr size_t kFlushMark = 16;  // what the flush may add
  std::string deflated(deflateBound(&stream, text.size()) + kFlushMark, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(deflated.data());
  stream.avail_out = static_cast<uInt>(deflated.size());
  deflate(&stream, Z_FULL_FLUSH);
  deflated.resize(deflated.size() - stream.avail_out);
  deflated.shrink_to_fit();
  return deflated;
}

// A text in pieces.
class TextSource : public BodySource {
 public:
  explicit TextSource(std::string text) : m_text(std::move(text)) {}

  std::optional<uint64_t> Length() const override { return m_text.size(); }
  bool Next(std::string& chunk) override {
    if (m_at == m_text.size()) return false;
    chunk.assign(m_text, m_at, kTextPiece);
    m_at += chunk.size();
    return true;
  }

 private:
  const std::string m_text;
  size_t m_at = 0;
};

class CompressedSource : public BodySource {
 public:
  CompressedSource(std::unique_ptr<Compressor> compressor, std::shared_ptr<BodySource> text)
      : m_compressor(std::move(compressor)), m_text(std::move(text)) {}

  std::optional<uint64_t> Length() const override { return std::nullopt; }
  bool Next(std::string& chunk) override {
    chunk.clear();
    while (chunk.empty() && !m_isSent) {
      m_isSent = !m_text->Next(m_piece);
      m_compressor->Add(m_isSent ? "" : m_piece, m_isSent, chunk);
    }
    return !chunk.empty();
  }

 private:
  const std::unique_ptr<Compressor> m_compressor;
  const std::shared_ptr<BodySource> m_text;
  std::string m_piece;
  bool m_isSent = false;
};

std::unique_ptr<Compressor> MakeCompressor(Coding coding) {
  if (coding == Coding::kZstd) return std::make_unique<ZstdCompressor>();
  return std::make_unique<GzipCompressor>();
}

}  // namespace

const char* NameOf(Coding coding) {
  switch (coding) {
    case Coding::kGzip:
      return "gzip";
    case Coding::kZstd:
      return "zstd";
    case Coding::kNone:
      break;
  }
  return "";
}

Codings WantedCodings(std::string_view acceptEncoding) {
  const Qualities wanted = QualitiesOf(acceptEncoding);
  Codings codings;
  if (wanted.gzip > 0 && wanted.gzip >= wanted.asItIs) codings.ofStream = codings.ofBody = Coding::kGzip;
  if (wanted.zstd > 0 && wanted.zstd >= std::max(wanted.gzip, wanted.asItIs)) codings.ofBody = Coding::kZstd;
  return codings;
}

std::shared_ptr<BodySource> CompressedBody(Coding coding, HttpReply& reply) {
  auto text =
      reply.source ? std::exchange(reply.source, nullptr) : std::make_shared<TextSource>(std::exchange(reply.body, {}));
  return std::make_shared<CompressedSource>(MakeCompressor(coding), std::move(text));
}

Text PackedEvents::Begin() {
  // Of RFC 1952: deflated, with no name, time or system told.
  static const Text s_head = std::make_shared<std::string>("\x1f\x8b\x08\0\0\0\0\0\0\xff", 10);
  return s_head;
}

Text PackedEvents::Pack(const Text& event) {
  const std::weak_ptr<const std::string> key = event;
  {
    const base::MutexLock lock(m_mutex);
    for (const Packed& latest : m_latest) {
      if (key.owner_before(latest.event) || latest.event.owner_before(key)) continue;
      if (Text packed = latest.packed.lock()) return packed;
    }
  }
  Text packed = std::make_shared<std::string>(DeflatedAlone(*event));
  const base::MutexLock lock(m_mutex);
  m_latest.push_back({key, packed, packed});
  m_bytes += packed->size();
  for (Packed& oldest : m_latest) {
    if (m_bytes <= kKeptEventBytes) break;
    if (const Text gone = std::exchange(oldest.kept, nullptr)) m_bytes -= gone->size();
  }
  if (m_latest.size() > kKeptEvents) {
    if (m_latest.front().kept) m_bytes -= m_latest.front().kept->size();
    m_latest.pop_front();
  }
  return packed;
}

}  // namespace server
