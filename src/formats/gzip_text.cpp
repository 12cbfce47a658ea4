// Inflating gzip data with zlib, member after member.
#include "formats/gzip_text.h"

#include <zlib.h>

#include <algorithm>
#include <climits>
#include <stdexcept>

namespace quarnel {
namespace {

constexpr unsigned char kGzipMagic0 = 0x1f;
constexpr unsigned char kGzipMagic1 = 0x8b;
// zlib's window bits for the largest window, plus 32: accept a gzip (or zlib) header.
constexpr int kGzipWindowBits = 15 + 32;
constexpr size_t kChunk = size_t{1} << 18;
// A structure file of a few gigabytes is no protein chain; a gzip bomb is stopped before it
// takes the machine's memory.
constexpr size_t kMaxInflatedBytes = size_t{4} << 30;

class Inflater {
 public:
  Inflater() {
    if (inflateInit2(&stream_, kGzipWindowBits) != Z_OK)
      throw std::runtime_error("gzip: zlib could not start");
  }
  ~Inflater() { inflateEnd(&stream_); }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  z_stream& stream() { return stream_; }

 private:
  z_stream stream_{};
};

}  // namespace

bool IsGzip(const std::string& bytes) {
  return bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == kGzipMagic0 &&
         static_cast<unsigned char>(bytes[1]) == kGzipMagic1;
}

std::string Gunzip(const std::string& bytes) {
  Inflater inflater;
  z_stream& stream = inflater.stream();
  auto* next = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  size_t left = bytes.size();
  std::string out;
  std::string chunk(kChunk, '\0');
  int status = Z_OK;
  for (;;) {
    if (stream.avail_in == 0 && left > 0) {
      uInt take = static_cast<uInt>(std::min<size_t>(left, UINT_MAX));
      stream.next_in = next;
      stream.avail_in = take;
      next += take;
      left -= take;
    }
    stream.next_out = reinterpret_cast<Bytef*>(&chunk[0]);
    stream.avail_out = static_cast<uInt>(chunk.size());
    status = inflate(&stream, Z_NO_FLUSH);
    if (status == Z_NEED_DICT || status == Z_DATA_ERROR || status == Z_MEM_ERROR)
      throw std::runtime_error("corrupt gzip data");
    out.append(chunk.data(), chunk.size() - stream.avail_out);
    if (out.size() > kMaxInflatedBytes)
      throw std::runtime_error("gzip data inflates to more than 4 GiB");
    if (status == Z_STREAM_END) {
      // Concatenated members are one file to gunzip; whatever follows the last member without
      // a gzip header (tape padding, say) is ignored, as gunzip ignores it.
      bool another = stream.avail_in >= 2 && stream.next_in[0] == kGzipMagic0 &&
                     stream.next_in[1] == kGzipMagic1;
      if (!another) break;
      if (inflateReset(&stream) != Z_OK) throw std::runtime_error("corrupt gzip data");
      continue;
    }
    if (status == Z_BUF_ERROR && stream.avail_in == 0 && left == 0)
      throw std::runtime_error("truncated gzip data");
  }
  return out;
}

}  // namespace quarnel
