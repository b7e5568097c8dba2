#include "app/quillmer/MidiDevices.h"

#include "platform/DesktopDevices.h"
#include "platform/LibrarySetup.h"

namespace quillmer {

std::unique_ptr<MidiDeviceProvider> makeMidiDeviceProvider(const TimerService& clock) {
    prepareLibraries();
    return std::make_unique<DesktopDeviceProvider>(clock);
}

}  // namespace quillmer
