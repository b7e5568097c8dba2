#pragma once
// Notes, pictures and page links placed on a page: Info (a note), InfoPic (a picture from a
// file), InfoButton (a captioned button that shows another page) and InfoButPic (a picture
// that does the same). They have no inputs, no output and no settings per snapshot; the
// record keeps the raw head words with the box's size, one further word, the name and one
// text. Everything here needs the engine lock.

#include <cstdint>
#include <string>

#include "engine/Module.h"

namespace quillmer {

class InfoModule : public Module {
public:
    explicit InfoModule(ModuleTypeId type) : Module(type, {}) {}

    // The note, the caption, or the picture file's path.
    std::string text;
    // Info: the text's size in points (0 the panel's own). The others: the page a click
    // shows, as its number 1..16 (0 none).
    int32_t extra = 0;

    // A click on a linking box: shows its page. False when it links nowhere.
    bool follow(Engine& engine) const;
    int linkedPage() const { return extra >= 1 && extra <= 16 ? static_cast<int>(extra) - 1 : -1; }

    bool writesOwnHead() const override { return true; }
    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void update(Engine&) override {}

protected:
    void onAttach(Engine& engine) override;
};

class Info final : public InfoModule {
public:
    Info();
};

class InfoPic final : public InfoModule {
public:
    InfoPic();
};

class InfoButton final : public InfoModule {
public:
    InfoButton();
};

class InfoButPic final : public InfoModule {
public:
    InfoButPic();
};

}  // namespace quillmer
