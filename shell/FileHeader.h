#pragma once
// The fixed 8276-byte head of a module file (.qmp), little endian and packed.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "engine/FileLayout.h"

namespace quillmer {

constexpr size_t kHeaderSize = 8276;
constexpr int32_t kFileMagic = 111;
constexpr int32_t kFormatVersion = 29;
constexpr int kComposerLines = 1000;
constexpr int kSliderCount = 16;

struct FileHeader {
    int32_t magic = kFileMagic;
    int32_t version = kFormatVersion;
    int16_t currentSnapshot = 0;
    int16_t snapshotCount = 0;
    std::array<std::string, 128> snapshotNames{};  // 24 characters each on disk
    std::array<uint8_t, kComposerLines> composerSnapshots{};
    std::array<int16_t, kComposerLines> composerMeasures{};
    int16_t composerCount = 0;
    int16_t composerEnd = 0;
    int16_t composerBegin = 0;
    int16_t tempo = 120;
    int16_t currentPage = 0;
    std::string authorName;    // as stored: transformed
    std::string modifierName;  // as stored: transformed
    std::array<uint8_t, kSliderCount> sliderValues{};
    std::array<std::string, kSliderCount> sliderLabels{};  // 32 characters each on disk
    int16_t sliderPanelTop = 0;
    int16_t sliderPanelLeft = 0;
    uint8_t lockPageHide = 0;
    uint8_t pageHide = 0;
    uint8_t lockModules = 0;
    int16_t absClock0 = 0;
    int16_t absClock1 = 0;
    int16_t versionMajor = 0;
    int16_t versionMinor = 0;
    int16_t versionRevision = 0;
    uint8_t sliderSend = 0;
    uint8_t sliderChannel = 0;
    uint8_t sliderGroup1 = 0;
    uint8_t sliderGroup2 = 0;
    uint8_t runState = 0;
    int16_t mainWidth = 0;
    int16_t mainHeight = 0;
    std::array<int16_t, kFileSlotCount> typeCounts{};  // by place in the file order

    std::vector<uint8_t> write() const;
    // Reads the first kHeaderSize bytes; the caller checks there are that many.
    static FileHeader read(const uint8_t* bytes);
    int versionNumber() const { return versionMajor * 100 + versionMinor * 10 + versionRevision; }
};

}  // namespace quillmer
