// The colours every picture gives the domains: the Okabe-Ito set, told apart with the common
// forms of colour blindness, yellow last as it is faint on white; grey for residues in none.
#pragma once

#include <string>

#include "base/text.h"

namespace quarnel {

struct Rgb {
  int r, g, b;
};

inline constexpr Rgb kDomainColours[] = {
    {0x00, 0x72, 0xB2},  // blue
    {0xE6, 0x9F, 0x00},  // orange
    {0x00, 0x9E, 0x73},  // bluish green
    {0xCC, 0x79, 0xA7},  // reddish purple
    {0x56, 0xB4, 0xE9},  // sky blue
    {0xD5, 0x5E, 0x00},  // vermillion
    {0xF0, 0xE4, 0x42},  // yellow
};
inline constexpr int kDomainColourCount = sizeof kDomainColours / sizeof kDomainColours[0];
inline constexpr Rgb kNoDomainColour = {0xB3, 0xB3, 0xB3};

// Past the seventh domain the colours repeat; chains with that many are rare, and the legend
// and file names still tell them apart.
inline Rgb DomainColour(int place) {
  return place < 0 ? kNoDomainColour : kDomainColours[place % kDomainColourCount];
}

inline std::string HexColour(Rgb c) { return Format("#%02X%02X%02X", c.r, c.g, c.b); }

}  // namespace quarnel
