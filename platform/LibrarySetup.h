#pragma once
// Process-wide settings of the audio, MIDI and MIDI-file libraries, made once before their
// first use: their own messages on stderr are silenced (we report failures as device events
// and errors with our own texts) and no JACK server is ever started behind the user's back.

namespace quillmer {

// Safe from any thread; only the first call does anything.
void prepareLibraries();

}  // namespace quillmer
