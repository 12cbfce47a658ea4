// The runs a classic command line hands on: an input the classic run would refuse or misread,
// read the batch way; and batch runs that need DSSP's library, handed to quarnel-full.
#pragma once

#include <string>

#include "app/batch_options.h"
#include "app/classic_input.h"

namespace quarnel {

// A classic command line whose input the classic run would refuse or misread: an mmCIF or gzip
// file, or a code whose file is kept under another name. Fills `batch` to read it through the
// structure-file front end, whole, and report it as the classic run reports it.
bool ReadTheBatchWay(const CommandLine& line, BatchOptions& batch);

// Whether this program cannot run the batch itself: it needs DSSP's library, which this
// program was built without.
bool NeedsFullProgram(const BatchOptions& batch);

// Replaces this process by quarnel-full, with the same command line and environment: the one
// beside this program when it can be run there, else the one of the installed tree
// (../libexec/quarnel from this program's folder, links resolved). Returns only when neither can
// be run, with the line that says why, naming the path beside this program.
std::string HandOver(const char* const* argv);

}  // namespace quarnel
