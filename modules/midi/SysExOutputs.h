#pragma once
// System exclusive out. SysEx builds one message from a general table and a bus value;
// SysExFile sends the messages of a .syx file. Both send on the rising edge of a strobe,
// at once, whatever the latency. Need the engine lock.

#include <cstdint>
#include <string>
#include <vector>

#include "engine/Module.h"

namespace quillmer {

// The messages of a .syx file, one after another, each F0 .. F7.
struct SysExMessages {
    std::vector<uint8_t> bytes;
    std::vector<size_t> ends;  // one past each message's F7
};

// A .syx file read and checked whole. False with `error` naming the file and what is wrong.
bool loadSysExFile(const std::string& path, SysExMessages& messages, std::string& error);
// The same check on bytes already read; `what` names them in the error.
bool parseSysEx(const std::vector<uint8_t>& bytes, const std::string& what, SysExMessages& messages, std::string& error);
constexpr size_t kMaxSysExFileBytes = 1 << 20;

// How a SysEx module's general table holds its message.
namespace sysextable {
constexpr int Port = 0;      // 0..3: A..D
constexpr int Length = 1;    // bytes between F0 and F7
constexpr int ValueAt = 2;   // 1..Length: the body byte the Value input replaces; 0 none
constexpr int Body = 3;      // the body's first byte
constexpr int MaxLength = 128 - Body;
}  // namespace sysextable

class SysEx final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {" Strobe", "Strobe: 0 to NZ sends the message", sysbus::Off},
        {" Table", "General table holding the message", sysbus::Off},
        {" Value", "Bus value placed into the message", sysbus::Off},
    };
    SysEx();

    // The message of the table the Table input names, as hex bytes with 'v' where the value
    // goes: "F0 43 10 4C 02 01 00 v F7".
    std::string messageText(const Engine& engine) const;
    // Writes a typed message into that table: hex bytes (F0 and F7 optional) and one 'v'.
    // False with `error` (and the table unchanged) when it doesn't read as a message.
    bool setMessageText(Engine& engine, const std::string& text, std::string& error);
    int port(const Engine& engine) const;
    void setPort(Engine& engine, int number);
    int table() const { return in(1); }
    int messagesSent = 0;
    // What the panel shows, brought up to date by each update when the table changed.
    std::string shownMessage = "F0 F7";
    int shownPort = 0;

    void update(Engine& engine) override;

private:
    void refreshShown(const Engine& engine);
    bool armed_ = false;
    uint32_t seenVersion_ = 0;
    int seenTable_ = -1;
};

class SysExFile final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {" Strobe", "Strobe: 0 to NZ sends the file", sysbus::Off},
        {" Port", "Port: 0 = A, 1 = B, 2 = C, 3 = D", sysbus::Off},
    };
    SysExFile();

    std::string fileName;  // the .syx file
    std::string note;      // a line of the user's own, kept with the file name
    // What the panel shows: the file's message count, or why it can't be sent.
    std::string status;
    bool loaded() const { return !messages_.ends.empty(); }
    size_t messageCount() const { return messages_.ends.size(); }
    int messagesSent = 0;

    // Chooses and reads a file. A file that can't be read or isn't SysEx leaves the module
    // as it was and returns false with `error` naming it.
    bool chooseFile(const std::string& path, std::string& error);
    // Reads the chosen file again (after a load, or when it changed on disk).
    bool reload(std::string& error);

    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void update(Engine& engine) override;

protected:
    void onAttach(Engine& engine) override;

private:
    void take(SysExMessages read);
    SysExMessages messages_;
    bool armed_ = false;
};

}  // namespace quillmer
