// The run's random stream against the C library's, and text in memory read exactly as the same
// bytes in a file.
#include <gtest/gtest.h>

#include <cstdlib>

#include "base/random.h"
#include "base/text.h"
#include "support.h"

namespace quarnel {
namespace {

// CTest runs every test in a process of its own, and nothing else in this executable draws
// from drand48, so its sequence here is that of a process that never seeded it: the sequence
// every earlier release of the tool sampled from.
TEST(RandomStream, EqualsDrand48OfAFreshProcessForAMillionDraws) {
  Rand48 stream;
  for (int draw = 0; draw < 1000000; ++draw) {
    const double expected = drand48();
    ASSERT_EQ(stream.Next(), expected) << "draw " << draw;
  }
}

std::vector<std::string> Pieces(const LineSource& source) {
  std::vector<std::string> pieces;
  std::unique_ptr<LineReader> reader = source.Open();
  EXPECT_NE(reader, nullptr) << source.name();
  if (reader == nullptr) return pieces;
  for (std::string piece; reader->Next(piece);) pieces.push_back(piece);
  EXPECT_FALSE(reader->Failed());
  return pieces;
}

TEST(LineSources, TextGivesTheSamePiecesAsTheSameBytesInAFile) {
  const std::string kLong(700, 'x');
  const std::string texts[] = {
      "",
      "ATOM\nTER\nEND\n",
      "no final newline",
      "ATOM\r\nEND\r\n",
      kLong + "\n" + kLong,                      // pieces of 299 characters, the last unended
      std::string(298, 'y') + "\n" + std::string(299, 'z') + "\nshort\n",  // at the buffer's edge
      std::string("AT\0OM\nEND\n\0\0tail", 16),  // text after a NUL is dropped from its piece
      "\n\n\n",
  };
  test::Scratch scratch;
  for (const std::string& text : texts) {
    test::WriteFile(scratch / "text", text);
    EXPECT_EQ(Pieces(TextSource("text", text)), Pieces(FileSource(scratch / "text")))
        << "text of " << text.size() << " bytes";
  }
  const std::vector<std::string> pieces = Pieces(TextSource("long", kLong + "\n"));
  ASSERT_EQ(pieces.size(), 3u);
  EXPECT_EQ(pieces[0].size(), 299u);
  EXPECT_EQ(pieces[2], std::string(700 - 2 * 299, 'x') + "\n");
}

// A name that opens but cannot be read must not pass for an empty structure.
TEST(LineSources, AFolderOpensButFailsOnReading) {
  test::Scratch scratch;
  std::unique_ptr<LineReader> reader = FileSource(scratch.path()).Open();
  ASSERT_NE(reader, nullptr);
  std::string piece;
  EXPECT_FALSE(reader->Next(piece));
  EXPECT_TRUE(reader->Failed());
}

}  // namespace
}  // namespace quarnel
