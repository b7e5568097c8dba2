#pragma once
// The links' transport over Open Sound Control (UDP, liblo). One thread per open link
// waits on its socket and on a wake-up from the tick: it takes packets in and sends the
// queued values out, so the tick only touches two lock-free queues.
//
// Out: a message to the link's address with one int32, the value.
// In: a message to the link's address whose first argument is a number (int32, int64,
// float, double, or true / false as 127 / 0) gives one value, cut to 0..127. Messages to
// other addresses are ignored and counted; a packet that isn't OSC, or a message with no
// number first, is counted as bad. Bundles are taken apart.

#include <memory>

#include "modules/midi/LinkTransport.h"

namespace quillmer {

std::unique_ptr<LinkTransport> makeOscLinkTransport();
// Makes every IPLink use it.
void installOscLinkTransport();

}  // namespace quillmer
