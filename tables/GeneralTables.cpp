#include "tables/GeneralTables.h"

namespace quillmer {

uint8_t generalTableStep(int page, int step) {
    if (page < 0 || page >= kGeneralTablePages || step < 0 || step >= kGeneralTableSteps) return 0;
    return 0;  // no pages are loaded yet
}

}  // namespace quillmer
