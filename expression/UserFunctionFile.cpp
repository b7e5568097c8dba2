#include "expression/UserFunctionFile.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#include "engine/AtomicFile.h"
#include "engine/Cp1252.h"
#include "engine/RegularFile.h"

namespace quillmer {

namespace {

std::string_view trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
    return s;
}

// Several lines become one: "fnEval(" + lines + ")".
std::string oneLine(std::string_view text) {
    if (text.find('\n') == std::string_view::npos) return std::string(text);
    std::string joined;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view part = trim(text.substr(start, end - start));
        if (!part.empty() && part.back() == '\r') part.remove_suffix(1);
        if (!part.empty()) {
            if (!joined.empty()) joined += ',';
            joined += part;
        }
        start = end + 1;
    }
    return "fnEval(" + joined + ")";
}

// Splits at the first '=': the prototype or name, and the body.
bool splitAtEquals(std::string_view line, std::string_view& left, std::string_view& right) {
    const size_t eq = line.find('=');
    if (eq == std::string_view::npos) return false;
    left = trim(line.substr(0, eq));
    right = trim(line.substr(eq + 1));
    return true;
}

class LineReader {
public:
    explicit LineReader(std::string_view text) : text_(text) {}
    bool next(std::string_view& line) {
        if (pos_ >= text_.size()) return false;
        size_t end = text_.find('\n', pos_);
        if (end == std::string_view::npos) end = text_.size();
        line = text_.substr(pos_, end - pos_);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        pos_ = end + 1;
        ++number_;
        return true;
    }
    int number() const { return number_; }

private:
    std::string_view text_;
    size_t pos_ = 0;
    int number_ = 0;
};

const char* badCharacters(std::string_view line) {
    if (line.size() > kMaxUserFunctionLine) return "the line is too long";
    for (char c : line) {
        const auto u = static_cast<unsigned char>(c);
        if (u < 32 && c != '\t') return "the line holds characters that aren't text";
    }
    return nullptr;
}

}  // namespace

int UserFunctions::expressionCount() const {
    int count = kFormulaCount;
    while (count > 0 && expressions[static_cast<size_t>(count - 1)].empty()) --count;
    return count;
}

FormulaLine splitFormulaLine(std::string_view line) {
    std::string_view title, body;
    if (!splitAtEquals(line, title, body) || title.find('(') != std::string_view::npos) return {{}, std::string(trim(line))};
    return {std::string(title), std::string(body)};
}

std::string joinFormulaLine(std::string_view title, std::string_view body) {
    const std::string b = oneLine(trim(body));
    return trim(title).empty() ? b : std::string(trim(title)) + " = " + b;
}

bool parseUserFunctions(std::string_view text, const std::string& source, UserFunctions& out, std::string& error) {
    LineReader lines(text);
    const auto fail = [&](const std::string& why) {
        error = "Unable to Load: " + source + ": line " + std::to_string(lines.number()) + ": " + why;
        return false;
    };
    const int limits[3] = {800, 802, kFormulaCount};
    const char* what[3] = {"variables", "user functions", "formulas"};
    int counts[3] = {0, 0, 0};
    std::string_view line;
    for (int i = 0; i < 3; ++i) {
        if (!lines.next(line)) {
            if (i == 0) return fail("the file is empty");
            break;  // a short file ends the read
        }
        const std::string_view digits = trim(line);
        const auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), counts[i]);
        if (digits.empty() || ec != std::errc() || end != digits.data() + digits.size() || counts[i] < 0)
            return fail(std::string("the count of ") + what[i] + " is not a number");
        if (counts[i] > limits[i])
            return fail(std::string("more ") + what[i] + " than the " + std::to_string(limits[i]) + " a file may hold");
    }
    UserFunctions read;
    for (int block = 0; block < 3; ++block) {
        for (int n = 0; n < counts[block]; ++n) {
            if (!lines.next(line)) {
                out = std::move(read);
                return true;
            }
            if (const char* bad = badCharacters(line)) return fail(bad);
            const std::string utf8 = cp1252ToUtf8(line);
            std::string_view left, right;
            if (block == 0) {
                if (!splitAtEquals(utf8, left, right) || left.empty()) return fail("a variable needs the form name=value");
                read.variables.push_back(utf8);
            } else if (block == 1) {
                if (!splitAtEquals(utf8, left, right) || left.find('(') == std::string_view::npos || right.empty())
                    return fail("a user function needs the form name(args) = body");
                read.functions.push_back(utf8);
            } else {
                read.expressions[static_cast<size_t>(n)] = std::string(trim(utf8));
            }
        }
    }
    out = std::move(read);
    return true;
}

std::string formatUserFunctions(const UserFunctions& lists) {
    const int expressions = lists.expressionCount();
    std::string text = std::to_string(lists.variables.size()) + "\r\n" + std::to_string(lists.functions.size()) + "\r\n" +
                       std::to_string(expressions) + "\r\n";
    const auto put = [&](std::string_view entry) { text += utf8ToCp1252(entry) + "\r\n"; };
    std::string_view left, right;
    for (std::string v : lists.variables) {
        std::replace(v.begin(), v.end(), '\n', ' ');
        put(v);
    }
    for (const std::string& f : lists.functions) {
        if (f.find('\n') == std::string::npos || !splitAtEquals(f, left, right)) put(f);
        else put(std::string(left) + " = " + oneLine(right));
    }
    for (int n = 0; n < expressions; ++n) {
        const std::string& e = lists.expressions[static_cast<size_t>(n)];
        if (e.find('\n') == std::string::npos) {
            put(e);
        } else {
            const FormulaLine f = splitFormulaLine(e);
            put(joinFormulaLine(f.title, f.body));
        }
    }
    return text;
}

bool readUserFunctionFile(const std::string& path, UserFunctions& out, std::string& error) {
    std::vector<uint8_t> bytes;
    std::string reason;
    if (!readRegularFile(path, kMaxUserFunctionFileBytes + 1, bytes, reason)) {
        error = "Unable to Load: " + path + ": " + reason;
        return false;
    }
    if (bytes.size() > kMaxUserFunctionFileBytes) {
        error = "Unable to Load: " + path + ": the file is too large for a user function file";
        return false;
    }
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return parseUserFunctions(text, path, out, error);
}

bool writeUserFunctionFile(const std::string& path, const UserFunctions& lists, std::string& error) {
    AtomicFile file(path);
    if (!file.create(error)) return false;
    const std::string text = formatUserFunctions(lists);
    const int fd = ::open(file.tempPath().c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) {
        error = saveError(path, "the file can't be written");
        return false;
    }
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n <= 0) {
            ::close(fd);
            error = saveError(path, "the file can't be written");
            return false;
        }
        done += static_cast<size_t>(n);
    }
    ::close(fd);
    return file.commit(error);
}

CompileReport compileUserFunctions(FormulaRuntime& runtime, const UserFunctions& lists) {
    CompileReport report;
    runtime.start();
    expr::Calc& calc = runtime.calc();
    const auto check = [&](std::vector<std::string>& into, bool ok) {
        into.push_back(ok && calc.error() == expr::kOk ? std::string() : calc.errorMessage());
        if (!into.back().empty()) ++report.errors;
        calc.clearError();
    };
    for (const std::string& v : lists.variables) {
        std::string_view name, value;
        splitAtEquals(v, name, value);
        check(report.variables, calc.defineVariable(std::string(name) + "=" + std::string(value)) >= 0);
    }
    for (const std::string& f : lists.functions) {
        std::string_view prototype, body;
        splitAtEquals(f, prototype, body);
        check(report.functions, calc.defineFunction(std::string(prototype) + "=" + oneLine(body)));
    }
    for (int n = 0; n < kFormulaCount; ++n) {
        const std::string& line = lists.expressions[static_cast<size_t>(n)];
        if (line.empty()) continue;
        const FormulaLine f = splitFormulaLine(line);
        const int code = runtime.setFormula(n, oneLine(f.body), f.title);
        if (code != expr::kOk) {
            report.expressions[static_cast<size_t>(n)] = calc.errorMessage();
            ++report.errors;
        }
        calc.clearError();
    }
    return report;
}

size_t errorPosition(std::string_view text, int code, std::string_view data) {
    const auto lower = [](char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c); };
    if (code == expr::kParenthesis) {
        std::vector<size_t> open;
        for (size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '(') open.push_back(i);
            if (text[i] == ')') {
                if (open.empty()) return i;
                open.pop_back();
            }
        }
        return open.empty() ? std::string_view::npos : open.front();
    }
    if (code == expr::kQuotes) {
        size_t last = std::string_view::npos;
        char quote = 0;
        for (size_t i = 0; i < text.size(); ++i) {
            if (quote == 0 && (text[i] == '\'' || text[i] == '"')) {
                quote = text[i];
                last = i;
            } else if (text[i] == quote) {
                quote = 0;
            }
        }
        return quote != 0 ? last : std::string_view::npos;
    }
    if (data.empty()) return std::string_view::npos;
    // The first whole-word occurrence of the name, case-insensitive.
    const auto isName = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.' || c == '$'; };
    for (size_t i = 0; i + data.size() <= text.size(); ++i) {
        bool same = true;
        for (size_t k = 0; k < data.size() && same; ++k) same = lower(text[i + k]) == lower(data[k]);
        if (!same) continue;
        if ((i > 0 && isName(text[i - 1])) || (i + data.size() < text.size() && isName(text[i + data.size()]))) continue;
        return i;
    }
    return std::string_view::npos;
}

}  // namespace quillmer
