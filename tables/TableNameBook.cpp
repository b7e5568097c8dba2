#include "tables/TableNameBook.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace quillmer {

namespace {

struct Entry {
    const Engine* engine;
    const ToneTableNames* tones;
    const TableNames* tables;
};

// Few engines live at once: one per session.
std::mutex bookLock;
std::vector<Entry>& book() {
    static std::vector<Entry> entries;
    return entries;
}

Entry find(const Engine& engine) {
    const std::lock_guard<std::mutex> held(bookLock);
    for (const Entry& e : book())
        if (e.engine == &engine) return e;
    return {&engine, nullptr, nullptr};
}

}  // namespace

void listTableNames(const Engine& engine, const ToneTableNames* tones, const TableNames* tables) {
    const std::lock_guard<std::mutex> held(bookLock);
    std::erase_if(book(), [&](const Entry& e) { return e.engine == &engine; });
    if (tones || tables) book().push_back({&engine, tones, tables});
}

std::string toneTableName(const Engine& engine, int table) {
    const Entry e = find(engine);
    return e.tones ? e.tones->name(table) : std::string();
}

std::string generalTableName(const Engine& engine, int table) {
    const Entry e = find(engine);
    return e.tables ? e.tables->name(table) : std::string();
}

}  // namespace quillmer
