// `run`: a patch played for a number of ticks, offline in virtual time unless --realtime,
// with a trace of chosen outputs, a recorded MIDI file and a rendered WAV file.

#include <CLI/CLI.hpp>

#include <charconv>
#include <chrono>
#include <iostream>
#include <optional>
#include <thread>

#include <unistd.h>

#include "app/cli/Commands.h"
#include "app/cli/PatchLoading.h"
#include "app/cli/Progress.h"
#include "engine/VirtualTimerService.h"
#include "platform/CaptureDevice.h"
#include "platform/DesktopDevices.h"
#include "platform/StandardMidiFile.h"
#include "platform/OfflineSynthOutput.h"
#include "platform/RealTimeTimerService.h"
#include "platform/VirtualTimeStampedOutput.h"
#include "shell/Session.h"

namespace quillmer {

namespace {

constexpr int kTailMs = 1500;  // the synth's release after the last tick

// The longest run: 10^9 ticks, about ten million bars (240 days at tempo 120 in real time).
constexpr int64_t kMostTicks = 1'000'000'000;
constexpr int64_t kTicksPerBar = 96;

struct RunOptions {
    std::string file;
    std::string ticks;  // as typed: checked by countOf
    std::string bars;
    std::vector<std::string> trace;
    int32_t seed = 0;
    int tempo = 0;
    bool extendedTempo = false;
    bool wholeMsTempo = false;
    std::string record;
    std::string wav;
    bool realtime = false;
    bool pressRun = false;
    bool song = false;  // the Composer list from Begin to End
    std::vector<std::string> ports;  // "A=DEVICE"
};

// Drawn on stderr, when it is a terminal, once a render has taken a second.
class ProgressBar {
public:
    explicit ProgressBar(int64_t total) : total_(total), start_(std::chrono::steady_clock::now()) {}
    ~ProgressBar() {
        if (drawn_) std::cerr << '\n';
    }
    void finish() {
        if (drawn_) std::cerr << '\r' << progressLine(total_, total_);
    }
    void show(int64_t done) {
        const auto now = std::chrono::steady_clock::now();
        if (!terminal_ || now - start_ < std::chrono::seconds(1) || now - last_ < std::chrono::milliseconds(100)) return;
        last_ = now;
        drawn_ = true;
        std::cerr << '\r' << progressLine(done, total_) << std::flush;
    }

private:
    int64_t total_;
    std::chrono::steady_clock::time_point start_;
    std::chrono::steady_clock::time_point last_{};
    bool terminal_ = ::isatty(2) != 0;
    bool drawn_ = false;
};

// The song: the Composer on and playing, recording when asked. False with a message.
bool startSong(Session& session, const RunOptions& o, std::string& error) {
    Composer& c = session.composer;
    if (c.count() == 0) {
        error = o.file + " has no Composer list to play";
        return false;
    }
    c.recordingPath = o.record;
    c.recordingFailed = [&error](const std::string& why) { error = why; };
    if (!o.record.empty() && !c.recording()) c.toggleRecord();
    c.on();
    return c.play();
}

int fail(const std::string& message) {
    std::cerr << "quillmer-cli: " << message << '\n';
    return 1;
}

// A count typed on the command line: a whole number from 1 to `most`, else nullopt.
std::optional<int64_t> countOf(const std::string& text, int64_t most) {
    int64_t n = 0;
    const char* end = text.data() + text.size();
    const auto [ptr, ec] = std::from_chars(text.data(), end, n);
    if (text.empty() || ec != std::errc() || ptr != end || n < 1 || n > most) return std::nullopt;
    return n;
}

// The bus ids of the traced outputs, by name; false for a name no output has.
bool traceIds(Engine& e, const std::vector<std::string>& names, std::vector<BusId>& ids, std::string& unknown) {
    for (const std::string& name : names) {
        const int position = e.names.sortedPosition(name);
        if (position < 0) {
            unknown = name;
            return false;
        }
        ids.push_back(e.names.SortedIdList()[static_cast<size_t>(position)]);
    }
    return true;
}

void printTraceRow(Engine& e, uint64_t tick, const std::vector<BusId>& ids) {
    std::cout << tick;
    for (BusId id : ids) std::cout << ',' << int{e.bus[id]};
    std::cout << '\n';
}

// Tempo, seed, the Run button and recording, before the first tick.
void prepare(Session& session, const RunOptions& o, MidiFileWriter& recorder) {
    Engine& e = session.engine;
    if (o.extendedTempo) e.setExtendedTempo(true);
    e.setExactTempo(!o.wholeMsTempo);
    if (o.tempo > 0) e.SetNewTempo(o.tempo);
    if (o.seed != 0) {
        e.options.randomSeed = o.seed;  // ResetClocks reseeds with it too
        e.seedRandom(o.seed);
    }
    if (o.pressRun) e.setRun(true);
    if (!o.record.empty()) e.ports.setRecordSink(&recorder);
    if (!o.record.empty() && !o.song) {
        e.ports.setRecording(true);
        if (e.bus[sysbus::Run] == 0) e.ports.InitializeMIDITracks();  // no run edge will do it
    }
}

int runOffline(const RunOptions& o, int64_t ticks) {
    if (!o.ports.empty()) return fail("--port needs --realtime: offline runs play only the built-in synth (--wav)");
    VirtualTimerService timers;
    Session session(timers, patchRegistry());
    if (!loadPatch(session, o.file)) return 1;
    Engine& e = session.engine;
    MidiFileWriter recorder;
    std::vector<BusId> ids;
    OfflineSynthOutput* wav = nullptr;  // owned by port A
    {
        auto held = e.lock();
        std::string unknown;
        if (!traceIds(e, o.trace, ids, unknown)) return fail("no output is named \"" + unknown + "\"");
        if (!o.wav.empty()) {
            auto synth = std::make_unique<OfflineSynthOutput>(timers, o.wav);
            wav = synth.get();
            e.ports.attachOutput(0, std::make_unique<VirtualTimeStampedOutput>(std::move(synth), timers));
            if (!e.ports.outputOpen(0))
                return fail(wav->problem().empty() ? "Unable to save " + o.wav + ": the built-in synth didn't start" : wav->problem());
            // Just opened: the reopen a load asks of every output would save the file once
            // too often, over whatever file was there before the render is done.
            e.ports.ReopenOutputs = false;
        } else if (!o.record.empty()) {
            e.ports.attachOutput(0, std::make_unique<CaptureDevice>("Recorder", timers));  // recording needs a port
        }
        prepare(session, o, recorder);
    }
    std::string songError;
    int64_t measures = 0;
    if (o.song) {
        auto held = e.lock();
        if (!startSong(session, o, songError)) return fail(songError);
        measures = session.composer.totalMeasures();
    }
    const auto playing = [&] {
        auto held = e.lock();
        return session.composer.transport() == Transport::Playing;
    };
    if (!o.trace.empty()) {
        std::cout << "tick";
        for (const std::string& name : o.trace) std::cout << ',' << name;
        std::cout << '\n';
    }
    const uint64_t first = e.ticksRun();
    ProgressBar progress(measures);
    while (o.song ? playing() : e.ticksRun() - first < static_cast<uint64_t>(ticks)) {
        const uint64_t before = e.ticksRun();
        if (o.song) progress.show(static_cast<int64_t>((before - first) / kTicksPerBar));
        if (!timers.fireNext()) {
            if (wav) wav->discard();  // a render cut short replaces nothing
            return fail("the clock stopped");
        }
        if (e.ticksRun() != before && !o.trace.empty()) {
            auto held = e.lock();
            printTraceRow(e, e.ticksRun() - first, ids);
        }
    }
    progress.finish();
    auto held = e.lock();
    e.StopTimers();  // the last tick: note-offs
    std::string error;
    if (!o.record.empty() && !o.song && !e.ports.SaveMidiFile(o.record, error)) return fail(error);
    if (!songError.empty()) return fail(songError);  // the song's own recording
    held.unlock();
    if (wav) {
        timers.advanceByMs(kTailMs);
        held.lock();
        e.ports.StopMIDI();  // closing the synth writes the WAV file
        if (!wav->saved()) return fail(wav->problem());
    }
    return 0;
}

int runRealtime(const RunOptions& o, int64_t ticks) {
    RealTimeTimerService timers;
    DesktopDeviceProvider devices(timers);
    int status = 0;
    {
        Session session(timers, patchRegistry());
        Engine& e = session.engine;
        e.ports.setProvider(&devices);
        e.ports.onError = [](const PortError& err) { std::cerr << "quillmer-cli: " << err.title << ": " << err.text << '\n'; };
        if (!loadPatch(session, o.file)) {
            timers.stop();
            return 1;
        }
        MidiFileWriter recorder;
        std::string songError;
        {
            auto held = e.lock();
            std::vector<std::string> choices = o.ports;
            if (choices.empty()) choices.push_back("A=Built-in Synth");
            for (const std::string& choice : choices) {
                const size_t eq = choice.find('=');
                const int port = eq == 1 ? choice[0] - 'A' : -1;
                if (port < 0 || port > 3) {
                    status = fail("--port takes A=DEVICE .. D=DEVICE, not \"" + choice + "\"");
                    break;
                }
                if (!e.ports.chooseOutput(port, choice.substr(2))) status = 1;
            }
            if (status == 0) prepare(session, o, recorder);
            if (status == 0 && o.song && !startSong(session, o, songError)) status = fail(songError);
        }
        if (status == 0) {
            if (o.song) {
                for (;;) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(50));
                    auto held = e.lock();
                    if (session.composer.transport() != Transport::Playing) break;
                }
            } else {
                std::this_thread::sleep_for(std::chrono::microseconds(e.quarterNoteMicros()) * ticks / 24);
            }
            auto held = e.lock();
            e.StopTimers();
            std::string error;
            if (!o.record.empty() && !o.song && !e.ports.SaveMidiFile(o.record, error)) status = fail(error);
            if (!songError.empty()) status = fail(songError);
            e.ports.beginExitDrain();
        }
        for (int i = 0; i < 200; ++i) {
            {
                auto held = e.lock();
                if (e.ports.exitDrained() || status != 0) break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        {
            auto held = e.lock();
            e.ports.StopAllMIDI();
        }
        timers.stop();
    }
    return status;
}

}  // namespace

void addRunCommand(CLI::App& app, int& exitStatus) {
    auto* command = app.add_subcommand("run", "Play a patch for a number of ticks or bars, or its Composer song (--song), offline unless --realtime");
    auto o = std::make_shared<RunOptions>();
    command->add_option("FILE", o->file, "The patch (.qmp)")->required();
    auto* ticks = command->add_option("--ticks", o->ticks, "Ticks to run (96 a whole note), 1 to 1000000000");
    auto* bars = command->add_option("--bars", o->bars, "Whole notes to run, 1 to 10416666");
    ticks->excludes(bars);
    command->add_option("--trace", o->trace, "Outputs to print after every tick, as CSV")->delimiter(',');
    command->add_option("--seed", o->seed, "Random seed");
    auto* tempo = command->add_option("--tempo", o->tempo, "Tempo in quarter notes a minute, 1..254 (1..1000 with --extended-tempo)");
    command->add_flag("--extended-tempo", o->extendedTempo, "Allow tempos up to 1000");
    command->add_flag("--whole-ms-tempo", o->wholeMsTempo, "Tick in whole milliseconds (Exact tempo off)");
    command->add_option("--record", o->record, "Record what is sent to a MIDI file");
    command->add_option("--wav", o->wav, "Render the built-in synth to a WAV file (offline)");
    command->add_flag("--realtime", o->realtime, "Play in real time on the chosen MIDI devices");
    command->add_option("--port", o->ports, "A=DEVICE: a device for an output port (with --realtime)");
    command->add_flag("--run", o->pressRun, "Press Run before the first tick");
    command->add_flag("--song", o->song, "Play the Composer list from Begin to End, recording with --record")
        ->excludes(ticks)
        ->excludes(bars);
    command->callback([&exitStatus, o, tempo] {
        if (o->ticks.empty() && o->bars.empty() && !o->song) {
            exitStatus = fail("run needs --ticks N, --bars N or --song");
            return;
        }
        constexpr int64_t mostBars = kMostTicks / kTicksPerBar;
        const std::optional<int64_t> count = o->song ? std::optional<int64_t>(0)
            : o->bars.empty() ? countOf(o->ticks, kMostTicks) : countOf(o->bars, mostBars);
        if (!count) {
            exitStatus = o->bars.empty()
                ? fail("--ticks takes a whole number from 1 to " + std::to_string(kMostTicks) + ", not \"" + o->ticks + "\"")
                : fail("--bars takes a whole number from 1 to " + std::to_string(mostBars) + ", not \"" + o->bars + "\"");
            return;
        }
        if (const int highest = o->extendedTempo ? 1000 : 254; tempo->count() > 0 && (o->tempo < 1 || o->tempo > highest)) {
            exitStatus = fail("--tempo " + std::to_string(o->tempo) + " is outside 1.." + std::to_string(highest) +
                              (o->extendedTempo ? "" : "; --extended-tempo allows up to 1000"));
            return;
        }
        if (o->realtime && !o->wav.empty()) {
            exitStatus = fail("--wav renders offline; leave out --realtime");
            return;
        }
        const int64_t ticksToRun = o->bars.empty() ? *count : *count * kTicksPerBar;
        exitStatus = o->realtime ? runRealtime(*o, ticksToRun) : runOffline(*o, ticksToRun);
    });
}

}  // namespace quillmer
