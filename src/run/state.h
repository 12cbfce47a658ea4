// The process-wide state of a run lives in one place and has one reset, so that every test
// (and every fuzzing iteration) starts from a clean run.
#pragma once

void ResetRunState();
