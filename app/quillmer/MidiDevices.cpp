#include "app/quillmer/MidiDevices.h"

#include "platform/DesktopDevices.h"
#include "platform/LibrarySetup.h"
#include "platform/OscLinkTransport.h"

namespace quillmer {

std::unique_ptr<MidiDeviceProvider> makeMidiDeviceProvider(const TimerService& clock) {
    prepareLibraries();
    installOscLinkTransport();  // the links of IPLink modules
    return std::make_unique<DesktopDeviceProvider>(clock);
}

}  // namespace quillmer
