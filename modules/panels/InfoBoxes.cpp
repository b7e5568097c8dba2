#include "modules/panels/InfoBoxes.h"

#include "engine/Engine.h"
#include "modules/panels/RawHead.h"

namespace quillmer {

bool InfoModule::follow(Engine& engine) const {
    const int page = linkedPage();
    if (page < 0) return false;
    engine.showPage(page);
    return true;
}

void InfoModule::writeBody(ByteWriter& out, const OutputNames&) const {
    writeRawHead(out, *this);
    out.i32(extra);
    out.str(Name);
    out.str(text);
}

void InfoModule::readBody(ByteReader& in, OutputNames&) {
    readRawHead(in, *this);
    extra = in.i32();
    Name = in.str();
    text = in.str();
}

void InfoModule::onAttach(Engine&) {
    if (Name.empty()) Name = numberedName(*this);
}

Info::Info() : InfoModule(*typeIdByName("Info")) {}
InfoPic::InfoPic() : InfoModule(*typeIdByName("InfoPic")) {}
InfoButton::InfoButton() : InfoModule(*typeIdByName("InfoButton")) {}
InfoButPic::InfoButPic() : InfoModule(*typeIdByName("InfoButPic")) {}

}  // namespace quillmer
