// `mfx`: one message class of one track of a MIDI file written as a .mfx list, as the
// translation dialog does it.

#include <CLI/CLI.hpp>

#include <iostream>

#include "app/cli/Commands.h"
#include "platform/MidiFileTranslation.h"

namespace quillmer {

namespace {

struct MfxRequest {
    std::string file;
    std::string out;
    int track = 0;
    std::string cls;
    int channel = 0;  // 0: the lowest channel with events of the class
};

int translateToMfx(const MfxRequest& r) {
    const auto fail = [](const std::string& message) {
        std::cerr << "quillmer-cli: " << message << '\n';
        return 1;
    };
    const std::optional<int> cls = messageClassByName(r.cls);
    if (!cls)
        return fail("unknown message class \"" + r.cls +
                    "\": a controller number 0-127, or MIDI Key, Velocity, Program Change, PitchBend, After Touch, Note Off");
    MidiFileTranslation t;
    std::string error, reason;
    if (!t.open(r.file, error, reason)) return fail(error + ": " + reason);
    for (const std::string& note : t.notes()) std::cerr << "quillmer-cli: " << r.file << ": " << note << '\n';
    if (r.track < 1 || r.track > t.trackCount())
        return fail(r.file + " has no track " + std::to_string(r.track) + " (its tracks are 1 to " +
                    std::to_string(t.trackCount()) + ")");
    const int track = r.track - 1;
    const std::string className = messageClassName(*cls);
    const int channel = r.channel > 0 ? r.channel - 1 : t.firstChannelWith(track, *cls);
    const MfxList list = channel < 0 ? MfxList{} : t.translate(track, channel, *cls);
    if (list.empty())
        return fail("track " + std::to_string(r.track) + " of " + r.file + " has no " + className + " events" +
                    (r.channel > 0 ? " on channel " + std::to_string(r.channel) : std::string()));
    if (!saveMfxFile(r.out, list, error, reason)) return fail(error + ": " + reason);
    std::cout << list.values.size() << " events of " << className << " from track " << r.track << " ("
              << t.trackName(track) << "), channel " << channel + 1 << ", at " << list.fileBpm << " a minute, to "
              << r.out << '\n';
    return 0;
}

}  // namespace

void addMfxCommand(CLI::App& app, int& exitStatus) {
    auto* command = app.add_subcommand("mfx", "Translate one message class of a MIDI file's track into a .mfx list");
    auto r = std::make_shared<MfxRequest>();
    command->add_option("FILE", r->file, "The MIDI file (.mid)")->required();
    command->add_option("OUT", r->out, "The list to write (.mfx)")->required();
    command->add_option("--track", r->track, "The track, counted from 1 in file order")->required();
    command->add_option("--class", r->cls,
                        "A controller number 0-127, or MIDI Key, Velocity, Program Change, PitchBend, After Touch, Note Off")
        ->required();
    command->add_option("--channel", r->channel, "The channel, 1-16; without it the lowest that has the class")
        ->check(CLI::Range(1, 16));
    command->callback([&exitStatus, r] { exitStatus = translateToMfx(*r); });
}

}  // namespace quillmer
