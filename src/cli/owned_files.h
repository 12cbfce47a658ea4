// Writing a picture file without ever replacing a file that is not ours: the rule every
// picture writer follows, in one place.
#pragma once

#include <string>

#include "cli/pictures.h"

namespace quarnel {

// Makes the folder when missing; false, with the reason in `written`, when it cannot.
bool MakeFolder(const std::string& folder, WrittenFiles& written);

// Writes `text` as `path`. An existing file is replaced only when its first line equals the
// text's first line, which names the kind of file, the input and the chain; the new text goes
// to a temporary file in the same folder first and is renamed over the name, so a run killed
// midway never leaves a half-written file under it.
void WriteOwnedFile(const std::string& path, const std::string& text, WrittenFiles& written);

}  // namespace quarnel
