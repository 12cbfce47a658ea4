// The order of a whole run, from the input name to the report.
#pragma once

#include <string>

// Everything up to and including the first domain assembly.
void CutDomainFirst(std::string& name);

// Undoes the most recent cut for as long as the assessment rejects the partition.
void AssessmentLoop();

// The whole run after the command line has been parsed; returns the exit status.
int RunQuarnel(int argc, char** argv);
