// gzip-compressed bytes, for tests that hand quarnel its inputs in every form users have them.
#pragma once

#include <zlib.h>

#include <stdexcept>
#include <string>

namespace quarnel::test {

inline std::string Gzip(const std::string& text) {
  constexpr int kGzipWindowBits = 15 + 16;  // deflate with a gzip header and trailer
  z_stream stream{};
  if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, kGzipWindowBits, 8, Z_DEFAULT_STRATEGY) != Z_OK)
    throw std::runtime_error("deflateInit2");
  std::string out(deflateBound(&stream, text.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(&out[0]);
  stream.avail_out = static_cast<uInt>(out.size());
  deflate(&stream, Z_FINISH);
  out.resize(stream.total_out);
  deflateEnd(&stream);
  return out;
}

}  // namespace quarnel::test
