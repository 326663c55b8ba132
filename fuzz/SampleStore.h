// A small store with all that a store file can hold, for fuzzers that damage it.
#pragma once

#include <string>

/// Writes the file once and keeps its bytes. @return these
const std::string& SampleStore();

/// The path of a file in a folder of the fuzzer's own, which is deleted at the end of the process.
std::string FuzzerFile(const std::string& name);

void WriteFile(const std::string& path, const std::string& bytes);
