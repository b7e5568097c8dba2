#pragma once
// Bank and voice names for the captions of the channel and note modules.
//
// "Names/Banks.txt" in the data folder names up to 128 banks, one a line, bank 0 first;
// banks it leaves out are "Bank 1", "Bank 2" and so on. A bank's name is the base name of
// its voice file beside it, "Names/<bank name>.txt": up to 128 voice names, one a line,
// program 0 first. A bank without a voice file has empty voice names. Lines are
// Windows-1252 text; a carriage return before the line end is dropped.

#include <array>
#include <string>
#include <vector>

namespace quillmer {

class VoiceNames {
public:
    static constexpr int kBanks = 128;
    static constexpr int kVoices = 128;

    VoiceNames();
    // Reads the names from the data folders, the user's own copies first.
    void loadFromDataFolders();
    // Reads the names from one folder that holds Banks.txt and the voice files.
    void loadFrom(const std::string& folder);

    // Out-of-range numbers give an empty name.
    std::string bankName(int bank) const;
    std::string voiceName(int bank, int program) const;

private:
    template <class Find>
    void load(const Find& find);

    std::array<std::string, kBanks> banks_;
    std::array<std::vector<std::string>, kBanks> voices_;
};

}  // namespace quillmer
