#include "modules/midi/LinkTransport.h"

#include <mutex>

namespace quillmer {

namespace {
std::mutex& factoryMutex() {
    static std::mutex m;
    return m;
}
LinkTransportFactory& factory() {
    static LinkTransportFactory f;
    return f;
}
}  // namespace

void setLinkTransportFactory(LinkTransportFactory make) {
    std::lock_guard<std::mutex> held(factoryMutex());
    factory() = std::move(make);
}

std::unique_ptr<LinkTransport> makeLinkTransport() {
    std::lock_guard<std::mutex> held(factoryMutex());
    return factory() ? factory()() : nullptr;
}

}  // namespace quillmer
