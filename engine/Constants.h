#pragma once
// Sizes and units shared across the engine.

#include <cstdint>

namespace quillmer {

constexpr int kBusSize = 25600;          // one byte per BusId
constexpr int kIdsPerFamily = 128;       // a BusFamily owns 128 consecutive ids
constexpr int kSystemOutputCount = 159;  // BusIds (and NameSlots) 0..158
constexpr int kSnapshotCount = 128;      // snapshot slots in every record
constexpr int kTicksPerWhole = 96;
constexpr int kDurationCodeCount = 110;
constexpr int kPageCount = 16;
constexpr int kTwipsPerPixel = 15;
constexpr int kSnapGridTwips = 120;

using BusId = uint16_t;
using NameSlot = int16_t;

}  // namespace quillmer
