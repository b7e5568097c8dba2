#include "platform/LibrarySetup.h"

#include <alsa/asoundlib.h>
#include <fluidsynth.h>
#include <glib.h>
#include <jack/jack.h>

#include <cstdlib>
#include <mutex>

namespace quillmer {
namespace {

void quietJack(const char*) {}

// ALSA's error handler is variadic C; the messages are dropped.
void quietAlsa(const char*, int, const char*, int, const char*, ...) {}

void quietFluid(int, const char*, void*) {}

void quietGlib(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

}  // namespace

void prepareLibraries() {
    static std::once_flag once;
    std::call_once(once, [] {
        // A user who wants the server started on demand may still say so.
        setenv("JACK_NO_START_SERVER", "1", 0);
        jack_set_error_function(quietJack);
        jack_set_info_function(quietJack);
        snd_lib_error_set_handler(quietAlsa);
        for (int level : {FLUID_PANIC, FLUID_ERR, FLUID_WARN, FLUID_INFO, FLUID_DBG})
            fluid_set_log_function(level, quietFluid, nullptr);
        const auto everyLevel = static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK | G_LOG_FLAG_FATAL | G_LOG_FLAG_RECURSION);
        g_log_set_handler("libsmf", everyLevel, quietGlib, nullptr);
    });
}

}  // namespace quillmer
