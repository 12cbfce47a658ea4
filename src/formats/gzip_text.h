// gzip-compressed input: recognised by its magic bytes and inflated in memory with zlib.
#pragma once

#include <string>

namespace quarnel {

bool IsGzip(const std::string& bytes);

// The decompressed bytes of every gzip member in turn, as gunzip gives them. Throws
// std::runtime_error with the reason (corrupt or truncated data, output too large).
std::string Gunzip(const std::string& bytes);

}  // namespace quarnel
