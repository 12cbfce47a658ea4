// Writing a picture file without ever replacing a file that is not ours: the rule every
// picture writer follows, in one place.
#pragma once

#include <string>

#include "report/pictures.h"

namespace quarnel {

// Makes the folder when missing; false, with the reason in `written`, when it cannot.
bool MakeFolder(const std::string& folder, WrittenFiles& written);

// Writes `text` as `path`. An existing file is replaced only when its first line equals the
// text's first line, which names the kind of file, the input and the chain. The new text goes
// to an unnamed file in the same folder first (a killed run leaves nothing of it), which is
// named and renamed over the name once complete, so no one ever finds a half-written file
// under it. Where the file system has no unnamed files, a named temporary one is used, listed
// in `temporaries` until renamed.
void WriteOwnedFile(const std::string& path, const std::string& text, WrittenFiles& written,
                    TemporaryFiles* temporaries);

}  // namespace quarnel
