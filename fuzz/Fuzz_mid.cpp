// Fuzz target: standard MIDI files as the translation reads them. Any bytes either give a
// message or tracks whose every class of every channel translates, in time order, to a
// .mfx list that reads back as it was written.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/MidiFileTranslation.h"

using namespace quillmer;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<uint8_t> bytes(data, data + size);
    MidiFileTranslation t;
    std::string error, reason;
    if (!t.openBytes(bytes, "fuzz.mid", error, reason)) {
        if (error.empty() || reason.empty()) std::abort();
        return 0;
    }
    size_t total = 0;
    for (int track = 0; track < t.trackCount(); ++track) {
        total += t.trackCaption(track).size();
        const auto channels = t.channelCounts(track);
        for (int channel = 0; channel < 16; ++channel) {
            if (channels[static_cast<size_t>(channel)] == 0) continue;
            const auto counts = t.classCounts(track, channel);
            for (int cls = 0; cls < kMessageClasses; ++cls) {
                if (counts[static_cast<size_t>(cls)] == 0) continue;
                const MfxList list = t.translate(track, channel, cls);
                if (list.values.size() != static_cast<size_t>(counts[static_cast<size_t>(cls)])) std::abort();
                for (size_t i = 1; i < list.times.size(); ++i)
                    if (list.times[i] < list.times[i - 1]) std::abort();
                const std::vector<uint8_t> file = mfxBytes(list);
                MfxList back;
                if (!parseMfx(file.data(), file.size(), back, reason) || back.values != list.values) std::abort();
                total += back.values.size();
            }
        }
    }
    return total == SIZE_MAX ? 1 : 0;
}
