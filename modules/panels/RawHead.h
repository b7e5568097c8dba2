#pragma once
// The head of a record that starts with raw words instead of the usual head: Active,
// Enabled, OutSlot, Priority and Page, then Top, Left, width and height (in twips), as the
// pad and the note boxes keep them.

#include <string>

#include "engine/Module.h"
#include "engine/RecordBytes.h"

namespace quillmer {

// The words every such block starts with: Active, Enabled, OutSlot, Priority, Page, Top, Left.
inline void writeHeadWords(ByteWriter& out, const Module& m) {
    out.i16(m.Active);
    out.i16(m.Enabled);
    out.i16(static_cast<int16_t>(m.OutSlot));
    out.i16(m.priority());
    out.i16(m.Page);
    out.i32(m.Top);
    out.i32(m.Left);
}

inline void readHeadWords(ByteReader& in, Module& m) {
    m.Active = in.i16();
    m.Enabled = in.i16();
    m.OutSlot = static_cast<NameSlot>(in.i16());
    m.setPriority(in.i16());
    m.Page = in.i16();
    m.Top = in.i32();
    m.Left = in.i32();
}

inline void writeRawHead(ByteWriter& out, const Module& m) {
    writeHeadWords(out, m);
    out.i32(m.Width);
    out.i32(m.Height);
}

inline void readRawHead(ByteReader& in, Module& m) {
    readHeadWords(in, m);
    m.Width = in.i32();
    m.Height = in.i32();
}

// The name such a record doesn't keep: the instance number and the type's prefix.
inline std::string numberedName(const Module& m) { return std::to_string(m.Index + 1) + std::string(m.info().prefix); }

}  // namespace quillmer
