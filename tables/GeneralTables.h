#pragma once
// The general table store: pages of 128 steps that table modules read. Until the store is
// loaded from table files every page is all zero. Needs the engine lock.

#include <cstdint>

namespace quillmer {

constexpr int kGeneralTablePages = 128;
constexpr int kGeneralTableSteps = 128;

// Step `step` (0..127) of page `page` (0..127); 0 outside that range.
uint8_t generalTableStep(int page, int step);

}  // namespace quillmer
