#pragma once

#include "core/RegistryEntry.h"

#include <string_view>
#include <vector>

/// Writes one block to the log: the title, a line for each entry with its path and its present value or "Not found",
/// and an empty entry. Nothing is changed, and whatever can't be read is "Not found". Fails only without memory. Any
/// thread.
void WriteRegistryReport(std::wstring_view title, std::vector<RegistryEntry> entries);
