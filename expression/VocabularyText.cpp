// Text variables, text sets, files in the data folder, serial ports, and the pixel functions.
//
// Text sets 0..9 hold lines; lines count from 0. Files open by handle 1..127:
//   OpenFile(mode$, f$, handle): mode "" or "R" reads, "W" makes the file anew, "A" reads and
//   writes, making it when missing; an empty f$ closes the handle. Returns 1 when open.
//   ReadFromFile(pos, handle): the byte at pos (from 1), 0 past the end or when not open.
//   WriteToFile(val, pos, handle): writes the byte val (cut to 0..255) at pos; 1 when written.
// There are no serial ports here: OpenCOM, SendCOM, CloseCOM and GetCOM return 0.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "engine/Cp1252.h"
#include "expression/CalcInternals.h"
#include "expression/RuntimeStores.h"

namespace quillmer {

using expr::Args;
using namespace fx;
namespace fs = std::filesystem;

namespace {

FormulaRuntime::Stores& st(const Args& a) { return rt(a).state(); }

int handleArg(double x) { return static_cast<int>(std::clamp<int64_t>(whole(x), -1, 1 << 20)); }
bool textVariable(const Args& a, int i) { return handleArg(a[i]) >= 0; }
void setText(const Args& a, int i, std::string_view text) { a.calc.setVariableText(handleArg(a[i]), text); }
std::vector<std::string>* textSet(const Args& a, double n) {
    return inRange(n, 0, 9) ? &st(a).textSets[static_cast<size_t>(cut(n, 0, 9))] : nullptr;
}

// A path inside the data folder, or empty when the name would lead outside it.
fs::path confined(const FormulaRuntime& r, std::string_view name) {
    if (r.dataFolder().empty()) return {};
    std::string n(name);
    std::replace(n.begin(), n.end(), '\\', '/');
    if (n.size() >= 2 && n[1] == ':') n.erase(0, 2);  // a drive prefix
    while (!n.empty() && n.front() == '/') n.erase(0, 1);
    const fs::path rel(n);
    for (const fs::path& part : rel)
        if (part == "..") return {};
    std::error_code ec;
    const fs::path root = fs::weakly_canonical(fs::path(r.dataFolder()), ec);
    if (ec) return {};
    const fs::path full = fs::weakly_canonical(root / rel, ec);
    if (ec) return {};
    const std::string rootText = root.string();
    const std::string fullText = full.string();
    if (fullText != rootText && fullText.rfind(rootText + "/", 0) != 0) return {};
    return full;
}

uint32_t fnv(std::string_view s) {
    uint32_t h = 2166136261u;
    for (const char c : s) {
        h ^= static_cast<uint8_t>(c);
        h *= 16777619u;
    }
    return h;
}

std::string justify(std::string_view text, int flag, int width) {
    std::string s(text);
    if (width <= 0 || static_cast<int>(s.size()) >= width) return s.substr(0, width > 0 ? static_cast<size_t>(width) : s.size());
    const size_t pad = static_cast<size_t>(width) - s.size();
    if (flag == 1) return std::string(pad, ' ') + s;
    if (flag == 2) return std::string(pad / 2, ' ') + s + std::string(pad - pad / 2, ' ');
    return s + std::string(pad, ' ');
}

double readLines(const Args& a, std::vector<std::string>& set, const fs::path& path, bool append) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return 0;
    if (!append) set.clear();
    std::string line;
    size_t count = 0;
    while (std::getline(in, line) && set.size() < 1000000) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        set.push_back(cp1252ToUtf8(line));
        ++count;
    }
    (void)a;
    return static_cast<double>(count);
}

template <int N>
double writeRegister(const Args& a) {
    st(a).textRegisters[N] = std::string(a.text(1));
    return static_cast<double>(st(a).textRegisters[N].size());
}
template <int N>
double readRegister(const Args& a) {
    if (!textVariable(a, 1)) return 0;
    setText(a, 1, st(a).textRegisters[N]);
    return static_cast<double>(st(a).textRegisters[N].size());
}

const Definition kLet[] = {
    {"LETStr(varname, varval$, s1$='', s2$='', s3$='', s4$='', s5$='', s6$='', s7$='', s8$='', s9$='')",
     [](const Args& a) {
         std::string s;
         for (int i = 2; i <= 11; ++i) s += a.text(i);
         setText(a, 1, s);
         return static_cast<double>(s.size());
     }},
    // LETCHR(var, code): the one character of code 0..255 (Windows-1252).
    {"LETCHR(2)",
     [](const Args& a) {
         const int code = cut(a[2], 0, 255);
         setText(a, 1, cp1252ToUtf8(std::string(1, static_cast<char>(code))));
         return static_cast<double>(code);
     }},
    // LETNUM(var, val, flg): the number as text; a non-zero flag rounds it to a whole number.
    {"LETNUM(var, val, flg=0)",
     [](const Args& a) {
         setText(a, 1, expr::formatNumber(a[3] != 0 ? std::round(a[2]) : a[2]));
         return a[2];
     }},
    // LETJUSTIFY(var, text, flg, s): the text in s characters, flush left (0), right (1) or
    // centred (2); longer text is cut.
    {"LETJUSTIFY(var, val$, flg=0, s=24)",
     [](const Args& a) {
         const std::string s = justify(a.text(2), cut(a[3], 0, 2), cut(a[4], 0, 4096));
         setText(a, 1, s);
         return static_cast<double>(s.size());
     }},
    {"LET(2)",
     [](const Args& a) {
         a.calc.setVariable(handleArg(a[1]), a[2]);
         return a[2];
     }},
};

const Definition kText[] = {
    {"SubStr(varname, varval$, pos=1, val=-1)",
     [](const Args& a) {
         const std::string_view s = a.text(2);
         const int64_t pos = std::max<int64_t>(1, whole(a[3])) - 1;
         std::string part;
         if (pos < static_cast<int64_t>(s.size())) {
             const int64_t len = a[4] < 0 ? static_cast<int64_t>(s.size()) : whole(a[4]);
             part = std::string(s.substr(static_cast<size_t>(pos), static_cast<size_t>(std::max<int64_t>(0, len))));
         }
         setText(a, 1, part);
         return static_cast<double>(part.size());
     }},
    {"TxtNum(txt$)",
     [](const Args& a) {
         const std::string s(expr::trim(a.text(1)));
         return std::strtod(s.c_str(), nullptr);
     }},
    {"ChrNum(txt$)",
     [](const Args& a) {
         const std::string s = utf8ToCp1252(a.text(1));
         return s.empty() ? 0.0 : static_cast<double>(static_cast<uint8_t>(s[0]));
     }},
    {"TX0.(str$)", writeRegister<0>}, {"TX1.(str$)", writeRegister<1>}, {"TX2.(str$)", writeRegister<2>},
    {"TX3.(str$)", writeRegister<3>}, {"TX4.(str$)", writeRegister<4>}, {"TX5.(str$)", writeRegister<5>},
    {"TX6.(str$)", writeRegister<6>}, {"TX7.(str$)", writeRegister<7>}, {"TX8.(str$)", writeRegister<8>},
    {"TX9.(str$)", writeRegister<9>},
    {"TX0(1)", readRegister<0>}, {"TX1(1)", readRegister<1>}, {"TX2(1)", readRegister<2>},
    {"TX3(1)", readRegister<3>}, {"TX4(1)", readRegister<4>}, {"TX5(1)", readRegister<5>},
    {"TX6(1)", readRegister<6>}, {"TX7(1)", readRegister<7>}, {"TX8(1)", readRegister<8>},
    {"TX9(1)", readRegister<9>},
    // TxtOpen(set, file, s): the lines of a file; a non-zero s adds them to the set.
    {"TxtOpen(txtset, f$, s=0 )",
     [](const Args& a) {
         std::vector<std::string>* set = textSet(a, a[1]);
         const fs::path p = confined(rt(a), a.text(2));
         if (set == nullptr || p.empty()) return 0.0;
         return readLines(a, *set, p, a[3] != 0);
     }},
    {"LetTxtLine(varname, textset,line)",
     [](const Args& a) {
         const std::vector<std::string>* set = textSet(a, a[2]);
         if (set == nullptr || !inRange(a[3], 0, static_cast<int>(set->size()) - 1)) {
             setText(a, 1, {});
             return 0.0;
         }
         const std::string& line = (*set)[static_cast<size_t>(whole(a[3]))];
         setText(a, 1, line);
         return static_cast<double>(line.size());
     }},
    {"TxtLines(1)",
     [](const Args& a) {
         const std::vector<std::string>* set = textSet(a, a[1]);
         return set == nullptr ? 0.0 : static_cast<double>(set->size());
     }},
    // TxtWordList(dst, src, s, c, f$): the words of lines s.. of src, c lines (0 all), up to a
    // line equal to f$, one word a line into dst. Returns the number of words.
    {"TxtWordList(dst, src, s=0, c=0, f$='~~~~')",
     [](const Args& a) {
         std::vector<std::string>* dst = textSet(a, a[1]);
         const std::vector<std::string>* src = textSet(a, a[2]);
         if (dst == nullptr || src == nullptr) return 0.0;
         std::vector<std::string> words;
         const int64_t first = std::max<int64_t>(0, whole(a[3]));
         const int64_t lines = whole(a[4]);
         for (int64_t i = first; i < static_cast<int64_t>(src->size()); ++i) {
             if (lines > 0 && i - first >= lines) break;
             const std::string& line = (*src)[static_cast<size_t>(i)];
             if (line == a.text(5)) break;
             size_t p = 0;
             while (p < line.size()) {
                 const size_t b = line.find_first_not_of(" \t", p);
                 if (b == std::string::npos) break;
                 const size_t e = std::min(line.find_first_of(" \t", b), line.size());
                 words.push_back(line.substr(b, e - b));
                 p = e;
             }
         }
         *dst = std::move(words);
         return static_cast<double>(dst->size());
     }},
    {"TxtDelEmpty(1)",
     [](const Args& a) {
         std::vector<std::string>* set = textSet(a, a[1]);
         if (set == nullptr) return 0.0;
         std::erase_if(*set, [](const std::string& s) { return expr::trim(s).empty(); });
         return static_cast<double>(set->size());
     }},
    // TxtHash(set, mod, rev): a 32-bit hash of each line (of the reversed line when rev is
    // non-zero), taken modulo mod when mod > 0. Returns the number of lines.
    {"TxtHash(src, mod=0, rev=0)",
     [](const Args& a) {
         const std::vector<std::string>* set = textSet(a, a[1]);
         if (set == nullptr) return 0.0;
         std::vector<uint32_t>& hashes = st(a).textHashes[static_cast<size_t>(cut(a[1], 0, 9))];
         hashes.clear();
         const int64_t mod = whole(a[2]);
         for (std::string line : *set) {
             if (a[3] != 0) std::reverse(line.begin(), line.end());
             uint32_t h = fnv(line);
             if (mod > 0) h = static_cast<uint32_t>(h % static_cast<uint64_t>(mod));
             hashes.push_back(h);
         }
         return static_cast<double>(hashes.size());
     }},
    {"TxtGetHash(2)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 9)) return 0.0;
         const std::vector<uint32_t>& h = st(a).textHashes[static_cast<size_t>(cut(a[1], 0, 9))];
         return inRange(a[2], 0, static_cast<int>(h.size()) - 1) ? static_cast<double>(h[static_cast<size_t>(whole(a[2]))])
                                                                  : 0.0;
     }},
    // TxtHashFileSeq(set, line): the line's hash as a note, 0..127.
    {"TxtHashFileSeq(2)",
     [](const Args& a) {
         const std::vector<std::string>* set = textSet(a, a[1]);
         if (set == nullptr || !inRange(a[2], 0, static_cast<int>(set->size()) - 1)) return 0.0;
         return static_cast<double>(fnv((*set)[static_cast<size_t>(whole(a[2]))]) % 128);
     }},
    // TxtHashTable(set, table): the first 128 lines' notes into a general table.
    {"TxtHashTable(2)",
     [](const Args& a) {
         const std::vector<std::string>* set = textSet(a, a[1]);
         if (set == nullptr || !inRange(a[2], 0, 127)) return 0.0;
         const size_t n = std::min<size_t>(set->size(), 128);
         for (size_t i = 0; i < n; ++i)
             rt(a).stores().writeTableStep(cut(a[2], 0, 127), static_cast<int>(i), static_cast<int>(fnv((*set)[i]) % 128));
         return static_cast<double>(n);
     }},
    {"TxtInfoBox(mid, textset, line=0)",
     [](const Args& a) {
         const std::vector<std::string>* set = textSet(a, a[2]);
         if (!inRange(a[1], 0, 127) || set == nullptr || !inRange(a[3], 0, static_cast<int>(set->size()) - 1))
             return 0.0;
         Vocabulary::infoBoxes(rt(a))[static_cast<size_t>(cut(a[1], 0, 127))] = (*set)[static_cast<size_t>(whole(a[3]))];
         return 1.0;
     }},
    {"InfoBox(mid, txt$)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 127)) return 0.0;
         Vocabulary::infoBoxes(rt(a))[static_cast<size_t>(cut(a[1], 0, 127))] = std::string(a.text(2));
         return 1.0;
     }},
    // GetInfoBox(mid, n): the length of the box's text for n = 0, else the code of character n.
    {"GetInfoBox(2)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 127)) return 0.0;
         const std::string s = utf8ToCp1252(rt(a).infoBox(cut(a[1], 0, 127)));
         const int64_t n = whole(a[2]);
         if (n == 0) return static_cast<double>(s.size());
         return n >= 1 && n <= static_cast<int64_t>(s.size()) ? static_cast<double>(static_cast<uint8_t>(s[static_cast<size_t>(n - 1)]))
                                                              : 0.0;
     }},
    {"TxtStoreX(P, I, str$)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 127) || !inRange(a[2], 0, 127)) return 0.0;
         st(a).textGrid[cut(a[1], 0, 127) * 128 + cut(a[2], 0, 127)] = std::string(a.text(3));
         return static_cast<double>(a.text(3).size());
     }},
    {"TxtFetchX(VarName, P, I)",
     [](const Args& a) {
         if (!inRange(a[2], 0, 127) || !inRange(a[3], 0, 127)) return 0.0;
         const auto it = st(a).textGrid.find(cut(a[2], 0, 127) * 128 + cut(a[3], 0, 127));
         const std::string s = it == st(a).textGrid.end() ? std::string{} : it->second;
         setText(a, 1, s);
         return static_cast<double>(s.size());
     }},
    // SetFileNameList(folder, ext, n): the names of the files of a folder with that extension
    // ("*" any), sorted, into list n (0..9). Returns how many.
    {"SetFileNameList(s$='c:\\', e$='*', n=0)",
     [](const Args& a) {
         if (!inRange(a[3], 0, 9)) return 0.0;
         std::vector<std::string>& list = st(a).fileNameLists[static_cast<size_t>(cut(a[3], 0, 9))];
         list.clear();
         const fs::path dir = confined(rt(a), a.text(1));
         if (dir.empty()) return 0.0;
         std::string ext(a.text(2));
         if (!ext.empty() && ext.front() == '.') ext.erase(0, 1);
         std::error_code ec;
         for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
             if (!it->is_regular_file(ec)) continue;
             const std::string name = it->path().filename().string();
             std::string e = it->path().extension().string();
             if (!e.empty()) e.erase(0, 1);
             if (ext == "*" || expr::lowerName(e) == expr::lowerName(ext)) list.push_back(name);
         }
         std::sort(list.begin(), list.end());
         return static_cast<double>(list.size());
     }},
    {"GetFileName(VarName, I=0, n=0)",
     [](const Args& a) {
         if (!inRange(a[3], 0, 9)) return 0.0;
         const std::vector<std::string>& list = st(a).fileNameLists[static_cast<size_t>(cut(a[3], 0, 9))];
         if (!inRange(a[2], 0, static_cast<int>(list.size()) - 1)) {
             setText(a, 1, {});
             return 0.0;
         }
         setText(a, 1, list[static_cast<size_t>(whole(a[2]))]);
         return 1.0;
     }},
    {"FileExists(f$)",
     [](const Args& a) {
         const fs::path p = confined(rt(a), a.text(1));
         std::error_code ec;
         return !p.empty() && fs::is_regular_file(p, ec) ? 1.0 : 0.0;
     }},
    {"OpenFile(txt$='', f$='', handle=1)",
     [](const Args& a) {
         if (!inRange(a[3], 1, 127)) return 0.0;
         std::FILE*& f = st(a).files[static_cast<size_t>(cut(a[3], 1, 127))];
         if (f != nullptr) {
             std::fclose(f);
             f = nullptr;
         }
         if (a.text(2).empty()) return 0.0;
         const fs::path p = confined(rt(a), a.text(2));
         if (p.empty()) return 0.0;
         std::error_code ec;
         if (fs::exists(p, ec) && !fs::is_regular_file(p, ec)) return 0.0;
         const std::string mode = expr::lowerName(expr::trim(a.text(1)));
         if (mode.empty() || mode == "r")
             f = std::fopen(p.c_str(), "rb");
         else if (mode == "w")
             f = std::fopen(p.c_str(), "w+b");
         else if (mode == "a") {
             f = std::fopen(p.c_str(), "r+b");
             if (f == nullptr) f = std::fopen(p.c_str(), "w+b");
         }
         return f != nullptr ? 1.0 : 0.0;
     }},
    {"ReadFromFile(pos=1, handle=1)",
     [](const Args& a) {
         if (!inRange(a[2], 1, 127) || a[1] < 1) return 0.0;
         std::FILE* f = st(a).files[static_cast<size_t>(cut(a[2], 1, 127))];
         if (f == nullptr || std::fseek(f, static_cast<long>(whole(a[1]) - 1), SEEK_SET) != 0) return 0.0;
         const int c = std::fgetc(f);
         return c == EOF ? 0.0 : static_cast<double>(c);
     }},
    {"WriteToFile(val=0, pos=1, handle=1)",
     [](const Args& a) {
         if (!inRange(a[3], 1, 127) || a[2] < 1 || a[2] > 1e9) return 0.0;
         std::FILE* f = st(a).files[static_cast<size_t>(cut(a[3], 1, 127))];
         if (f == nullptr || std::fseek(f, static_cast<long>(whole(a[2]) - 1), SEEK_SET) != 0) return 0.0;
         const bool ok = std::fputc(cut(a[1], 0, 255), f) != EOF;
         std::fflush(f);
         return ok ? 1.0 : 0.0;
     }},
    {"OpenCOM(Com=1, baud=9600, parity$='N', Bits=8, stop=1)", [](const Args&) { return 0.0; }},
    {"SendCOM(Com=1, str$='123')", [](const Args&) { return 0.0; }},
    {"CloseCOM(Com)", [](const Args&) { return 0.0; }},
    {"GetCOM(str, Com=1)", [](const Args&) { return 0.0; }},
};

// --- pixels ---

Picture* picture(const Args& a, double mid) {
    if (!inRange(mid, 0, 127)) return nullptr;
    Picture& p = st(a).pictures[static_cast<size_t>(cut(mid, 0, 127))];
    if (p.pixels.empty()) p.pixels.assign(static_cast<size_t>(kPictureSize) * kPictureSize, 0);
    return &p;
}
bool inside(double x, double y) { return inRange(x, 0, kPictureSize - 1) && inRange(y, 0, kPictureSize - 1); }
size_t at(double x, double y) { return static_cast<size_t>(cut(y, 0, kPictureSize - 1) * kPictureSize + cut(x, 0, kPictureSize - 1)); }
uint32_t colour(double c) { return static_cast<uint32_t>(cut(c, 0, 0xFFFFFF)); }

const Definition kPixels[] = {
    {"PEN(2)",
     [](const Args& a) {
         Picture* p = picture(a, a[1]);
         if (p == nullptr) return 0.0;
         const double old = p->pen;
         p->pen = colour(a[2]);
         return old;
     }},
    {"ClsPix(1)",
     [](const Args& a) {
         Picture* p = picture(a, a[1]);
         if (p == nullptr) return 0.0;
         if (!rt(a).stores().fillPicture(cut(a[1], 0, 127), p->pen)) {
             std::fill(p->pixels.begin(), p->pixels.end(), p->pen);
             ++p->changes;
         }
         return 1.0;
     }},
    {"RPix(mid,x,y)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 127) || !inside(a[2], a[3])) return 0.0;
         uint32_t c = 0;
         if (rt(a).stores().readPixel(cut(a[1], 0, 127), cut(a[2], 0, 127), cut(a[3], 0, 127), c))
             return static_cast<double>(c);
         const Picture& p = st(a).pictures[static_cast<size_t>(cut(a[1], 0, 127))];
         return p.pixels.empty() ? 0.0 : static_cast<double>(p.pixels[at(a[2], a[3])]);
     }},
    {"WPix(mid,x,y,c)",
     [](const Args& a) {
         if (!inside(a[2], a[3])) return 0.0;
         Picture* p = picture(a, a[1]);
         if (p == nullptr) return 0.0;
         const uint32_t c = a[4] < 0 ? p->pen : colour(a[4]);
         if (!rt(a).stores().writePixel(cut(a[1], 0, 127), cut(a[2], 0, 127), cut(a[3], 0, 127), c)) {
             p->pixels[at(a[2], a[3])] = c;
             ++p->changes;
         }
         return static_cast<double>(c);
     }},
    {"RGB(r,g,b)",
     [](const Args& a) {
         return static_cast<double>(cut(a[1], 0, 255) + cut(a[2], 0, 255) * 256 + cut(a[3], 0, 255) * 65536);
     }},
    {"InfoPix(mid,x,y)", [](const Args& a) { return inRange(a[1], 0, 127) && inside(a[2], a[3]) ? 1.0 : 0.0; }},
};

}  // namespace

void Vocabulary::letFamily(FormulaRuntime& r) {
    define(r, kLet, std::size(kLet));
    for (const fx::Definition& d : kLet) {
        const std::string_view proto = d.prototype;
        r.calc().preParse(proto.substr(0, proto.find('(')), variableToHandle, &r);
    }
}

void Vocabulary::textAndFiles(FormulaRuntime& r) {
    define(r, kText, std::size(kText));
    for (const char* name : {"SubStr", "LetTxtLine", "TxtFetchX", "GetFileName", "GetCOM", "TX0", "TX1", "TX2", "TX3",
                             "TX4", "TX5", "TX6", "TX7", "TX8", "TX9"})
        r.calc().preParse(name, variableToHandle, &r);
}

void Vocabulary::pixels(FormulaRuntime& r) { define(r, kPixels, std::size(kPixels)); }

}  // namespace quillmer
