#pragma once
// The demo patch, made by code so that it can be made again when the file format grows:
// an A-minor groove at tempo 112 with a vibraphone melody, a bass line and drums on
// channel 10, in the snapshots "Intro", "Verse" and "Chorus", and a Composer song of them.

#include <string>

namespace quillmer {

class Session;

// Places and connects the demo's modules in an empty session and stores its snapshots.
// Needs the engine lock.
void buildDemoPatch(Session& session);
// Builds the demo and writes it to `path` as a load would leave it (name slots in file
// order), so that loading and saving it again changes no byte. False with `error`.
bool writeDemoPatch(Session& session, const std::string& path, std::string& error);

}  // namespace quillmer
