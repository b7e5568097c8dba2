#pragma once
// Settings of the control and display types that the record keeps once per snapshot: one
// byte of each setting for every snapshot, setting after setting, as the file lays them.

#include <array>
#include <cstdint>

#include "engine/Constants.h"
#include "engine/RecordBytes.h"

namespace quillmer {

template <size_t N>
struct PerSnapshot {
    std::array<std::array<uint8_t, kSnapshotCount>, N> bytes{};

    uint8_t get(size_t setting, int snapshot) const { return bytes[setting][static_cast<size_t>(snapshot)]; }
    void put(size_t setting, int snapshot, int value) {
        bytes[setting][static_cast<size_t>(snapshot)] = static_cast<uint8_t>(value);
    }
    void fill(size_t setting, int value) { bytes[setting].fill(static_cast<uint8_t>(value)); }
    void write(ByteWriter& out) const {
        for (const auto& row : bytes) out.raw(row);
    }
    void read(ByteReader& in) {
        for (auto& row : bytes)
            for (uint8_t& b : row) b = in.u8();
    }
};

}  // namespace quillmer
