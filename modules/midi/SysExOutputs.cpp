#include "modules/midi/SysExOutputs.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>

#include "engine/Engine.h"
#include "engine/RegularFile.h"

namespace quillmer {

namespace {

constexpr uint8_t kStart = 0xF0;
constexpr uint8_t kEnd = 0xF7;

std::string hexByte(int b) {
    char text[4];
    std::snprintf(text, sizeof text, "%02X", b & 0xFF);
    return text;
}

}  // namespace

bool parseSysEx(const std::vector<uint8_t>& bytes, const std::string& what, SysExMessages& messages, std::string& error) {
    SysExMessages read;
    bool inside = false;
    for (size_t i = 0; i < bytes.size(); ++i) {
        const uint8_t b = bytes[i];
        const std::string at = " at byte " + std::to_string(i) + " (" + hexByte(b) + ")";
        if (!inside) {
            if (b != kStart) {
                error = what + " is not a SysEx file: a message must begin with F0" + at;
                return false;
            }
            inside = true;
        } else if (b == kEnd) {
            inside = false;
            read.ends.push_back(i + 1);
        } else if (b >= 0x80) {
            error = what + " is not a SysEx file: status byte inside a message" + at;
            return false;
        }
    }
    if (inside) {
        error = what + " is not a SysEx file: its last message has no F7";
        return false;
    }
    if (read.ends.empty()) {
        error = what + " holds no SysEx message";
        return false;
    }
    read.bytes = bytes;
    messages = std::move(read);
    return true;
}

bool loadSysExFile(const std::string& path, SysExMessages& messages, std::string& error) {
    std::vector<uint8_t> bytes;
    std::string reason;
    if (!readRegularFile(path, kMaxSysExFileBytes + 1, bytes, reason)) {
        error = "Unable to read " + path + ": " + reason;
        return false;
    }
    if (bytes.size() > kMaxSysExFileBytes) {
        error = path + " is too long for a SysEx file (more than 1 MB)";
        return false;
    }
    return parseSysEx(bytes, path, messages, error);
}

// --- SysEx ---

SysEx::SysEx() : Module(*typeIdByName("SysEx"), kInputs) {}

int SysEx::port(const Engine& engine) const { return engine.generalTableStep(table(), sysextable::Port) & 3; }

void SysEx::setPort(Engine& engine, int number) {
    engine.writeGeneralTableStep(table(), sysextable::Port, number & 3);
    refreshShown(engine);
}

void SysEx::refreshShown(const Engine& engine) {
    seenVersion_ = engine.generalTablesVersion();
    seenTable_ = table();
    shownMessage = messageText(engine);
    shownPort = port(engine);
    viewChanged = true;
}

std::string SysEx::messageText(const Engine& engine) const {
    const int t = table();
    const int length = std::min(engine.generalTableStep(t, sysextable::Length), sysextable::MaxLength);
    const int valueAt = engine.generalTableStep(t, sysextable::ValueAt);
    std::string text = "F0";
    for (int i = 1; i <= length; ++i)
        text += i == valueAt ? std::string(" v") : " " + hexByte(engine.generalTableStep(t, sysextable::Body + i - 1));
    return text + " F7";
}

bool SysEx::setMessageText(Engine& engine, const std::string& text, std::string& error) {
    std::vector<int> body;
    int valueAt = 0;
    size_t i = 0;
    while (i < text.size()) {
        if (std::isspace(static_cast<unsigned char>(text[i])) || text[i] == ',') {
            ++i;
            continue;
        }
        size_t end = i;
        while (end < text.size() && !std::isspace(static_cast<unsigned char>(text[end])) && text[end] != ',') ++end;
        std::string word = text.substr(i, end - i);
        i = end;
        if (word == "v" || word == "V") {
            if (valueAt != 0) {
                error = "A message takes the value in one place only";
                return false;
            }
            body.push_back(0);
            valueAt = static_cast<int>(body.size());
            continue;
        }
        if (word.size() > 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X')) word = word.substr(2);
        int b = -1;
        if (!word.empty() && word.size() <= 2 && std::all_of(word.begin(), word.end(), [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); }))
            b = std::stoi(word, nullptr, 16);
        if (b < 0) {
            error = "\"" + word + "\" is not a byte in hex (00 to 7F) or v";
            return false;
        }
        const bool first = body.empty() && valueAt == 0;
        if (b == kStart && first) continue;
        if (b == kEnd && i >= text.find_last_not_of(" \t\r\n,") + 1) continue;
        if (b > 0x7F) {
            error = hexByte(b) + " can't stand inside a SysEx message (data bytes are 00 to 7F)";
            return false;
        }
        body.push_back(b);
    }
    if (body.size() > static_cast<size_t>(sysextable::MaxLength)) {
        error = "A message holds at most " + std::to_string(sysextable::MaxLength) + " bytes between F0 and F7";
        return false;
    }
    const int t = table();
    engine.writeGeneralTableStep(t, sysextable::Length, static_cast<int>(body.size()));
    engine.writeGeneralTableStep(t, sysextable::ValueAt, valueAt);
    for (size_t k = 0; k < body.size(); ++k) engine.writeGeneralTableStep(t, sysextable::Body + static_cast<int>(k), body[k]);
    refreshShown(engine);
    return true;
}

void SysEx::update(Engine& engine) {
    if (engine.generalTablesVersion() != seenVersion_ || table() != seenTable_) refreshShown(engine);
    if (in(0) == 0) {
        armed_ = true;
        return;
    }
    if (!armed_) return;
    armed_ = false;
    const int t = table();
    const int length = std::min(engine.generalTableStep(t, sysextable::Length), sysextable::MaxLength);
    const int valueAt = engine.generalTableStep(t, sysextable::ValueAt);
    std::array<uint8_t, 130> message{};
    size_t n = 0;
    message[n++] = kStart;
    for (int i = 1; i <= length; ++i)
        message[n++] = static_cast<uint8_t>(i == valueAt ? in(2) & 127 : engine.generalTableStep(t, sysextable::Body + i - 1));
    message[n++] = kEnd;
    engine.ports.SendMIDISysEx(engine.generalTableStep(t, sysextable::Port) & 3, std::span<const uint8_t>(message.data(), n));
    ++messagesSent;
    viewChanged = true;
}

// --- SysExFile ---

SysExFile::SysExFile() : Module(*typeIdByName("SysExFile"), kInputs) {}

bool SysExFile::chooseFile(const std::string& path, std::string& error) {
    SysExMessages read;
    if (!loadSysExFile(path, read, error)) {
        status = error;  // the message; the file in use stays
        viewChanged = true;
        return false;
    }
    fileName = path;
    take(std::move(read));
    return true;
}

bool SysExFile::reload(std::string& error) {
    SysExMessages read;
    if (fileName.empty()) {
        take({});
        status = "(no file)";
        return true;
    }
    const bool ok = loadSysExFile(fileName, read, error);
    take(std::move(read));
    if (!ok) status = error;
    return ok;
}

void SysExFile::take(SysExMessages read) {
    messages_ = std::move(read);
    const size_t n = messages_.ends.size();
    status = std::to_string(n) + (n == 1 ? " message" : " messages");
    viewChanged = true;
}

void SysExFile::onAttach(Engine& /*engine*/) {
    std::string error;
    reload(error);
}

void SysExFile::update(Engine& engine) {
    if (in(0) == 0) {
        armed_ = true;
        return;
    }
    if (!armed_) return;
    armed_ = false;
    if (!loaded()) return;
    const int port = in(1) & 3;
    size_t begin = 0;
    for (size_t end : messages_.ends) {
        engine.ports.SendMIDISysEx(port, std::span<const uint8_t>(messages_.bytes.data() + begin, end - begin));
        begin = end;
    }
    ++messagesSent;
    viewChanged = true;
}

void SysExFile::writeBody(ByteWriter& out, const OutputNames& names) const {
    out.str(fileName);
    out.str(note);
    Module::writeBody(out, names);
}

void SysExFile::readBody(ByteReader& in, OutputNames& names) {
    fileName = in.str();
    note = in.str();
    Module::readBody(in, names);
}

}  // namespace quillmer
