// A small store with all that a store file can hold, for fuzzers that damage it.
#pragma once

#include <string>

/// Writes the file once and keeps its bytes. @return these
const std::string& SampleStore();

/// A folder for a fuzzer's files, deleted at the end of the process. @return its path
const std::string& FuzzerFolder();

void WriteFile(const std::string& path, const std::string& bytes);
