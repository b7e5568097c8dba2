// Text to nodes: a recursive descent over the operator levels of Calc.h.

#include <cmath>
#include <cstdlib>

#include "expression/Calc.h"
#include "expression/CalcInternals.h"

namespace quillmer::expr {

namespace {

constexpr int kMaxNesting = 200;    // parentheses, calls and aliases inside each other
constexpr int kMaxHeight = 2000;    // the longest path of a compiled formula

struct ParseFailure {
    int code;
    std::string data;
};

bool identStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool identChar(char c) { return identStart(c) || (c >= '0' && c <= '9') || c == '.'; }
bool digit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

class Parser {
public:
    Parser(Calc& calc, std::string_view text, Calc::Expr& out, const Calc::Function* owner, bool lenient, int nesting)
        : calc_(calc), s_(text), e_(out), owner_(owner), lenient_(lenient), nesting_(nesting) {}

    // The whole text as a number formula (or a text one when `allowText` and it starts so).
    int32_t whole(bool allowText, bool* isText) {
        skip();
        int32_t n;
        if (allowText && startsText()) {
            n = text();
            *isText = true;
        } else {
            n = expression();
        }
        skip();
        if (pos_ < s_.size()) {
            if (s_[pos_] == ')') throw ParseFailure{kParenthesis, {}};
            throw ParseFailure{kInvalid, {}};
        }
        return n;
    }
    int32_t wholeText() {
        const int32_t n = text();
        skip();
        if (pos_ < s_.size()) throw ParseFailure{kInvalid, {}};
        return n;
    }
    std::vector<int> heights;

private:
    Calc& calc_;
    std::string_view s_;
    size_t pos_ = 0;
    Calc::Expr& e_;
    const Calc::Function* owner_;
    bool lenient_;
    int nesting_;

    // --- nodes ---
    int32_t add(Op op, int32_t a = -1, int32_t b = -1, double num = 0) {
        Calc::Node nd;
        nd.op = op;
        nd.a = a < 0 ? 0 : a;
        nd.b = b < 0 ? 0 : b;
        nd.num = num;
        int h = 1;
        if (a >= 0 && op != Op::Var && op != Op::Param && op != Op::TextLit && op != Op::TextVar && op != Op::TextParam)
            h = std::max(h, 1 + heightOf(a));
        if (b >= 0 && op != Op::Call) h = std::max(h, 1 + heightOf(b));
        return push(nd, h);
    }
    int32_t push(const Calc::Node& nd, int h) {
        if (h > kMaxHeight) throw ParseFailure{kLibrary, "Formula too long or too deeply nested"};
        e_.nodes.push_back(nd);
        heightsRef().push_back(h);
        return static_cast<int32_t>(e_.nodes.size() - 1);
    }
    std::vector<int>& heightsRef() { return *heights_; }
    int heightOf(int32_t n) const { return (*heights_)[static_cast<size_t>(n)]; }

public:
    std::vector<int>* heights_ = &heights;

private:
    // --- characters ---
    void skip() {
        while (pos_ < s_.size() && (s_[pos_] == ' ' || s_[pos_] == '\t' || s_[pos_] == '\r' || s_[pos_] == '\n')) ++pos_;
    }
    char peek() {
        skip();
        return pos_ < s_.size() ? s_[pos_] : '\0';
    }
    char peekAt(size_t k) const { return pos_ + k < s_.size() ? s_[pos_ + k] : '\0'; }
    bool eat(char c) {
        if (peek() == c) {
            ++pos_;
            return true;
        }
        return false;
    }
    bool eat2(char c1, char c2) {
        if (peek() == c1 && peekAt(1) == c2) {
            pos_ += 2;
            return true;
        }
        return false;
    }
    bool keyword(std::string_view word) {
        skip();
        if (pos_ + word.size() > s_.size()) return false;
        for (size_t i = 0; i < word.size(); ++i) {
            char c = s_[pos_ + i];
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
            if (c != word[i]) return false;
        }
        const char next = peekAt(word.size());
        if (identChar(next) || next == '$') return false;
        pos_ += word.size();
        return true;
    }
    std::string_view identifier() {
        skip();
        const size_t start = pos_;
        if (pos_ >= s_.size() || !identStart(s_[pos_])) return {};
        while (pos_ < s_.size() && identChar(s_[pos_])) ++pos_;
        if (pos_ < s_.size() && s_[pos_] == '$') ++pos_;
        return s_.substr(start, pos_ - start);
    }
    void enter() {
        if (++nesting_ > kMaxNesting) throw ParseFailure{kLibrary, "Formula too long or too deeply nested"};
    }
    void leave() { --nesting_; }
    void close() {
        if (eat(')')) return;
        skip();
        if (pos_ >= s_.size()) {
            if (lenient_) return;  // a body may leave parentheses open at its end
            throw ParseFailure{kParenthesis, {}};
        }
        throw ParseFailure{kInvalid, {}};
    }

    // --- levels, loosest first ---
    int32_t expression() {
        enter();
        int32_t l = andLevel();
        while (true) {
            if (keyword("or") || eat2('|', '|'))
                l = add(Op::Or, l, andLevel());
            else if (keyword("xor"))
                l = add(Op::Xor, l, andLevel());
            else
                break;
        }
        leave();
        return l;
    }
    int32_t andLevel() {
        int32_t l = notLevel();
        while (keyword("and") || eat2('&', '&')) l = add(Op::And, l, notLevel());
        return l;
    }
    int32_t notLevel() {
        if (keyword("not")) {
            enter();
            const int32_t n = add(Op::Not, notLevel());
            leave();
            return n;
        }
        return comparison();
    }
    int32_t comparison() {
        int32_t l = sum();
        while (true) {
            Op op;
            if (eat2('=', '='))
                op = Op::Eq;
            else if (eat2('<', '>') || eat2('!', '='))
                op = Op::Ne;
            else if (eat2('<', '='))
                op = Op::Le;
            else if (eat2('>', '='))
                op = Op::Ge;
            else if (eat('='))
                op = Op::Eq;
            else if (eat('<'))
                op = Op::Lt;
            else if (eat('>'))
                op = Op::Gt;
            else
                break;
            l = add(op, l, sum());
        }
        return l;
    }
    int32_t sum() {
        int32_t l = modLevel();
        while (true) {
            if (eat('+'))
                l = add(Op::Add, l, modLevel());
            else if (eat('-'))
                l = add(Op::Sub, l, modLevel());
            else
                break;
        }
        return l;
    }
    int32_t modLevel() {
        int32_t l = wholeDivision();
        while (keyword("mod")) l = add(Op::Mod, l, wholeDivision());
        return l;
    }
    int32_t wholeDivision() {
        int32_t l = product();
        while (eat('\\')) l = add(Op::IDiv, l, product());
        return l;
    }
    int32_t product() {
        int32_t l = unary();
        while (true) {
            if (eat('*'))
                l = add(Op::Mul, l, unary());
            else if (eat('/'))
                l = add(Op::Div, l, unary());
            else
                break;
        }
        return l;
    }
    int32_t unary() {
        if (eat('-')) {
            enter();
            const int32_t n = add(Op::Neg, unary());
            leave();
            return n;
        }
        if (eat('+')) {
            enter();
            const int32_t n = unary();
            leave();
            return n;
        }
        return power();
    }
    int32_t power() {
        int32_t base = postfix();
        if (eat('^')) {
            enter();
            base = add(Op::Pow, base, unary());  // right to left: 2^3^2 = 2^(3^2)
            leave();
        }
        return base;
    }
    int32_t postfix() {
        int32_t n = primary();
        while (peek() == '!' && peekAt(1) != '=') {
            ++pos_;
            n = add(Op::Fact, n);
        }
        return n;
    }

    int32_t primary() {
        const char c = peek();
        if (c == '\0') throw ParseFailure{kInvalid, {}};
        if (c == '(') {
            ++pos_;
            enter();
            const int32_t n = expression();
            close();
            leave();
            return n;
        }
        if (c == ')') throw ParseFailure{kParenthesis, {}};
        if (digit(c) || (c == '.' && digit(peekAt(1)))) return number();
        if (c == '&') return radixNumber();
        if (c == '\'' || c == '"') {
            quoted();  // reports unbalanced quotes first
            throw ParseFailure{kArgType, {}};
        }
        const std::string_view name = identifier();
        if (name.empty()) throw ParseFailure{kInvalid, {}};
        if (peek() == '(') return callOf(name);
        return bareName(name);
    }

    int32_t number() {
        const size_t start = pos_;
        while (pos_ < s_.size() && digit(s_[pos_])) ++pos_;
        if (pos_ < s_.size() && s_[pos_] == '.') {
            ++pos_;
            while (pos_ < s_.size() && digit(s_[pos_])) ++pos_;
        }
        if (pos_ < s_.size() && (s_[pos_] == 'e' || s_[pos_] == 'E')) {
            size_t k = pos_ + 1;
            if (k < s_.size() && (s_[k] == '+' || s_[k] == '-')) ++k;
            if (k < s_.size() && digit(s_[k])) {
                pos_ = k;
                while (pos_ < s_.size() && digit(s_[pos_])) ++pos_;
            }
        }
        const std::string copy(s_.substr(start, pos_ - start));
        return add(Op::Num, -1, -1, std::strtod(copy.c_str(), nullptr));
    }
    int32_t radixNumber() {
        ++pos_;  // '&'
        char kind = pos_ < s_.size() ? s_[pos_] : '\0';
        if (kind >= 'a' && kind <= 'z') kind = static_cast<char>(kind - 'a' + 'A');
        int radix;
        int code;
        if (kind == 'H') {
            radix = 16;
            code = kBadHex;
        } else if (kind == 'O') {
            radix = 8;
            code = kBadOctal;
        } else if (kind == 'B') {
            radix = 2;
            code = kBadBinary;
        } else {
            throw ParseFailure{kInvalid, {}};
        }
        ++pos_;
        double value = 0;
        int digits = 0;
        while (pos_ < s_.size() && (identChar(s_[pos_]))) {
            char d = s_[pos_];
            int v;
            if (d >= '0' && d <= '9')
                v = d - '0';
            else if (d >= 'a' && d <= 'f')
                v = d - 'a' + 10;
            else if (d >= 'A' && d <= 'F')
                v = d - 'A' + 10;
            else
                throw ParseFailure{code, {}};
            if (v >= radix) throw ParseFailure{code, {}};
            value = value * radix + v;
            ++digits;
            ++pos_;
        }
        if (digits == 0) throw ParseFailure{code, {}};
        return add(Op::Num, -1, -1, value);
    }
    std::string quoted() {
        const char q = s_[pos_++];
        std::string out;
        while (true) {
            if (pos_ >= s_.size()) throw ParseFailure{kQuotes, {}};
            const char c = s_[pos_++];
            if (c == q) {
                if (pos_ < s_.size() && s_[pos_] == q) {  // a doubled quote is one quote
                    out += q;
                    ++pos_;
                    continue;
                }
                return out;
            }
            out += c;
        }
    }

    int paramIndex(const std::string& lower) const {
        if (owner_ == nullptr) return -1;
        for (size_t i = 0; i < owner_->params.size(); ++i)
            if (owner_->params[i] == lower) return static_cast<int>(i);
        return -1;
    }

    int32_t bareName(std::string_view name) {
        std::string lower = lowerName(name);
        const bool dollar = !lower.empty() && lower.back() == '$';
        if (dollar) lower.pop_back();
        const int p = paramIndex(lower);
        if (p >= 0) {
            if (owner_->isText[static_cast<size_t>(p)]) throw ParseFailure{kArgType, std::string(name)};
            return add(Op::Param, p);
        }
        const int v = calc_.variableHandle(lower);
        if (v >= 0) {
            if (calc_.variables_[static_cast<size_t>(v)].isText) throw ParseFailure{kArgType, std::string(name)};
            return add(Op::Var, v);
        }
        const auto alias = calc_.aliases_.find(lower);
        if (alias != calc_.aliases_.end()) return sub(alias->second, false);
        throw ParseFailure{kUndefinedVariable, std::string(name)};
    }

    // Parses `text` into this formula, in place of the current operand.
    int32_t sub(std::string_view text, bool asText) {
        enter();
        Parser inner(calc_, text, e_, owner_, false, nesting_);
        inner.heights_ = heights_;
        bool unusedText = false;
        const int32_t n = asText ? inner.wholeText() : inner.whole(false, &unusedText);
        leave();
        return n;
    }

    bool startsText() {
        const char c = peek();
        if (c == '\'' || c == '"') return true;
        const size_t save = pos_;
        const std::string_view name = identifier();
        const bool call = peek() == '(';
        pos_ = save;
        if (name.empty() || call) return false;
        std::string lower = lowerName(name);
        if (!lower.empty() && lower.back() == '$') lower.pop_back();
        const int p = paramIndex(lower);
        if (p >= 0) return owner_->isText[static_cast<size_t>(p)] != 0;
        const int v = calc_.variableHandle(lower);
        return v >= 0 && calc_.variables_[static_cast<size_t>(v)].isText;
    }

    // Text: terms joined with & or +. A term is quoted text, a text variable or parameter,
    // or a number (a product), which joins as its digits.
    int32_t text() {
        enter();
        int32_t l = textTerm();
        while (true) {
            skip();
            if (peek() == '&' && peekAt(1) != '&' && peekAt(1) != 'H' && peekAt(1) != 'h' && peekAt(1) != 'O' &&
                peekAt(1) != 'o' && peekAt(1) != 'B' && peekAt(1) != 'b') {
                ++pos_;
            } else if (peek() == '+') {
                ++pos_;
            } else {
                break;
            }
            l = add(Op::TextJoin, l, textTerm());
        }
        leave();
        return l;
    }
    int32_t textTerm() {
        const char c = peek();
        if (c == '\'' || c == '"') {
            if (static_cast<int>(e_.texts.size()) >= calc_.capacities_.textSpace)
                throw ParseFailure{kSpaceFull, {}};
            e_.texts.push_back(quoted());
            return push(literalNode(static_cast<int32_t>(e_.texts.size() - 1)), 1);
        }
        if (startsText()) {
            const std::string_view name = identifier();
            std::string lower = lowerName(name);
            if (lower.back() == '$') lower.pop_back();
            const int p = paramIndex(lower);
            if (p >= 0) return add(Op::TextParam, p);
            return add(Op::TextVar, calc_.variableHandle(lower));
        }
        return add(Op::TextNum, product());
    }
    static Calc::Node literalNode(int32_t index) {
        Calc::Node nd;
        nd.op = Op::TextLit;
        nd.a = index;
        return nd;
    }

    // The first argument's text, up to its top-level ',' or ')'.
    std::string_view rawArgument() {
        skip();
        const size_t start = pos_;
        int level = 0;
        char quote = 0;
        size_t i = pos_;
        for (; i < s_.size(); ++i) {
            const char c = s_[i];
            if (quote) {
                if (c == quote) quote = 0;
            } else if (c == '\'' || c == '"') {
                quote = c;
            } else if (c == '(') {
                ++level;
            } else if (c == ')') {
                if (level == 0) break;
                --level;
            } else if (c == ',' && level == 0) {
                break;
            }
        }
        if (quote) throw ParseFailure{kQuotes, {}};
        pos_ = i;
        return trim(s_.substr(start, i - start));
    }

    int32_t callOf(std::string_view name) {
        const std::string lower = lowerName(name);
        const int id = calc_.findFunction(lower);
        if (id < 0) throw ParseFailure{kUndefinedFunction, std::string(name)};
        const Calc::Function& f = calc_.functions_[static_cast<size_t>(id)];
        enter();
        eat('(');
        std::vector<int32_t> args;
        auto isTextParam = [&f](size_t i) { return !f.variadic && i < f.isText.size() && f.isText[i]; };
        if (peek() != ')') {
            while (true) {
                if (args.size() >= 32) throw ParseFailure{kArgCount, f.name};
                int32_t a;
                if (args.empty() && f.pre != nullptr) {
                    const std::string raw(rawArgument());
                    const std::string rewritten = f.pre(calc_, f.preUser, raw);
                    a = sub(rewritten, isTextParam(0));
                } else {
                    a = isTextParam(args.size()) ? text() : expression();
                }
                args.push_back(a);
                if (!eat(',')) break;
            }
        }
        close();
        leave();
        const int count = static_cast<int>(args.size());
        if (count < f.minArgs || count > f.maxArgs) throw ParseFailure{kArgCount, f.name};
        Calc::Node nd;
        nd.op = Op::Call;
        nd.a = static_cast<int32_t>(e_.args.size());
        nd.b = id;
        nd.count = count;
        int h = 1;
        for (const int32_t a : args) {
            e_.args.push_back(a);
            h = std::max(h, 1 + heightOf(a));
        }
        return push(nd, h);
    }
};

Calc::Expr* Calc::compile(std::string_view text, const Function* owner, bool lenient) {
    auto e = std::make_unique<Expr>();
    try {
        Parser p(*this, text, *e, owner, lenient, 0);
        bool isText = false;
        e->root = p.whole(owner == nullptr, &isText);
        e->isText = isText;
        e->height = p.heights[static_cast<size_t>(e->root)];
        for (const int h : p.heights) e->height = std::max(e->height, h);
    } catch (const ParseFailure& f) {
        fail(f.code, f.data);
        return nullptr;
    } catch (const std::exception&) {
        fail(kLibrary, "Out of memory");
        return nullptr;
    }
    return e.release();
}

}  // namespace quillmer::expr
