// Bank and voice names: the files of the Names folder, numbered defaults where they leave
// banks out, the shipped General MIDI names, and the captions of the modules that show them.

#include <gtest/gtest.h>

#include "SessionHarness.h"
#include "modules/midi/ChannelOutputs.h"
#include "modules/midi/NoteOutputs.h"
#include "shell/VoiceNames.h"

using namespace quillmer;
using namespace quillmer::testing;

TEST(VoiceNames, BanksFromTheFileAndNumberedDefaultsForTheRest) {
    ScratchDir dir;
    std::string banks = "Studio\r\n\r\nKit\r\n";
    for (int i = 3; i < 140; ++i) banks += "Extra\n";
    writeBytes(dir.file("Banks.txt"), std::vector<uint8_t>(banks.begin(), banks.end()));
    const std::string studio = "Caf\xE9 Piano\r\nStrings";
    writeBytes(dir.file("Studio.txt"), std::vector<uint8_t>(studio.begin(), studio.end()));

    VoiceNames names;
    EXPECT_EQ(names.bankName(5), "Bank 5") << "numbered before anything is read";
    names.loadFrom(dir.path.string());
    EXPECT_EQ(names.bankName(0), "Studio");
    EXPECT_EQ(names.bankName(1), "Bank 1") << "an empty line counts as missing";
    EXPECT_EQ(names.bankName(2), "Kit");
    EXPECT_EQ(names.bankName(127), "Extra") << "128 lines at most";
    EXPECT_EQ(names.bankName(128), "");
    EXPECT_EQ(names.voiceName(0, 0), "Caf\u00e9 Piano") << "Windows-1252 on disk";
    EXPECT_EQ(names.voiceName(0, 1), "Strings");
    EXPECT_EQ(names.voiceName(0, 2), "") << "past the end of the voice file";
    EXPECT_EQ(names.voiceName(2, 0), "") << "Kit has no voice file";

    ScratchDir empty;
    names.loadFrom(empty.path.string());
    EXPECT_EQ(names.bankName(0), "Bank 0") << "without Banks.txt every bank is numbered";
    EXPECT_EQ(names.voiceName(0, 0), "");
}

TEST(VoiceNames, TheShippedGeneralMidiNamesReachTheChannelAndProgramCaptions) {
    SessionHarness h;
    EXPECT_EQ(h.session.voiceNames.bankName(0), "General MIDI");
    EXPECT_EQ(h.session.voiceNames.voiceName(0, 0), "Acoustic Grand Piano");
    EXPECT_EQ(h.session.voiceNames.voiceName(0, 127), "Gunshot");

    Engine& e = h.session.engine;
    auto& chan = static_cast<MIDIChan&>(h.add("MIDIChan"));
    auto& voice = static_cast<MIDIVoice&>(h.add("MIDIVoice"));
    h.connect(voice, 6, "~   5");
    auto held = e.lock();
    e.tick();
    EXPECT_EQ(chan.bankCaption, "0. General MIDI");
    EXPECT_EQ(voice.programCaption, "5. Electric Piano 2");
    held.unlock();
    h.connect(chan, 0, "~   3");
    h.connect(voice, 6, "~   6");
    held.lock();
    e.tick();
    EXPECT_EQ(chan.bankCaption, "3. Bank 3");
    EXPECT_EQ(voice.programCaption, "6. ") << "bank 3 has no voice names";
}
