#include "expression/Calc.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "expression/CalcInternals.h"

namespace quillmer::expr {

namespace {

constexpr size_t kArgStackSize = 16384;
constexpr int kMaxParams = 32;
constexpr int kNestedEvaluationCost = 24;
constexpr int kPureDepthLimit = 32;
constexpr size_t kTextBytesPerStep = 256;

const char* const kErrorTexts[] = {
    "",
    "",
    "Mismatched parenthesis",
    "Undefined variable: ",
    "Invalid binary number",
    "Invalid octal number",
    "Invalid hexadecimal number",
    "Factorial overflow",
    "Mismatched quotes",
    "Invalid expression",
    "Definition space is full",
    "Undefined function: ",
    "Invalid number args for ",
    "Incorrect arg type for ",
    "Division by 0",
    "Integer division by 0",
    "Invalid exponent value",
    "Invalid value for SQR",
    "Invalid value for LOG2",
    "Invalid value for LOG10",
    "Invalid value for LOG or LN",
    "Invalid value for ASIN",
    "Invalid value for ACOS",
    "Invalid value for SEC",
    "Invalid value for CSC",
    "Invalid value for COT",
    "Invalid value for COTH",
    "Invalid value for CSCH",
    "Invalid value for ACOSH",
    "Invalid value for ATANH",
    "Invalid value for ACOTH",
    "Invalid value for ASECH",
    "Invalid value for ACSCH",
};

double xorshiftRandom(void* user) {
    uint64_t& s = *static_cast<uint64_t*>(user);
    s ^= s << 13;
    s ^= s >> 7;
    s ^= s << 17;
    return static_cast<double>(s >> 11) * (1.0 / 9007199254740992.0);
}

}  // namespace

std::string lowerName(std::string_view name) {
    std::string s(name);
    for (char& c : s)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return s;
}

std::string_view trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t' || s.front() == '\r' || s.front() == '\n'))
        s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r' || s.back() == '\n'))
        s.remove_suffix(1);
    return s;
}

std::string formatNumber(double v) {
    if (std::isnan(v)) return "NaN";
    if (std::isinf(v)) return v < 0 ? "-Inf" : "Inf";
    if (v == 0) return "0";
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.15g", v);
    return buf;
}

std::string errorText(int code, std::string_view data) {
    if (code == kOk) return {};
    if (code == kLibrary) return std::string(data);
    if (code < 0 || code > kAcsch) return "Error " + std::to_string(code);
    std::string text = kErrorTexts[code];
    if (code == kUndefinedVariable || code == kUndefinedFunction || code == kArgCount || code == kArgType)
        text += data;
    return text;
}

Calc::Calc() : random_(xorshiftRandom) {
    randomUser_ = &randomState_;
    argStack_.assign(kArgStackSize, 0.0);
    textStack_.assign(kArgStackSize, std::string_view{});
    textScratch_.resize(kArgStackSize);
    reset();
}

Calc::~Calc() = default;

void Calc::reset(std::string_view capacities) {
    ++definitions_;
    formulas_.clear();
    formulas_.emplace_back();  // handle 0 is none
    freeFormulas_.clear();
    functions_.clear();
    functionIndex_.clear();
    variables_.clear();
    freeVariables_.clear();
    variableIndex_.clear();
    aliases_.clear();
    variableCount_ = 0;
    error_ = kOk;
    errorData_.clear();
    trigMode_ = TrigMode::Radian;
    capacities_ = Capacities{};
    int* fields[] = {&capacities_.formulas, &capacities_.functions, &capacities_.variables, &capacities_.aliases,
                     &capacities_.textSpace};
    size_t k = 0;
    std::string_view rest = capacities;
    while (!rest.empty() && k < std::size(fields)) {
        const size_t comma = rest.find(',');
        const std::string_view field = trim(rest.substr(0, comma));
        int value = 0;
        const auto [p, ec] = std::from_chars(field.data(), field.data() + field.size(), value);
        if (ec == std::errc{} && p == field.data() + field.size() && value > 0) *fields[k] = value;
        ++k;
        if (comma == std::string_view::npos) break;
        rest.remove_prefix(comma + 1);
    }
    addBuiltIns();
}

void Calc::fail(int code, std::string_view data) {
    if (error_ != kOk) return;  // the first error is the one reported
    error_ = code;
    errorData_ = data;
}

void Calc::clearError() {
    error_ = kOk;
    errorData_.clear();
}

bool Calc::spend(int64_t steps) {
    if (error_ != kOk) return false;
    steps_ += steps;
    if (steps_ > stepBudget_) {
        fail(kLibrary, "Evaluation stopped: more than " + std::to_string(stepBudget_) + " steps");
        return false;
    }
    return true;
}

int Calc::findFunction(std::string_view lower) const {
    const auto it = functionIndex_.find(std::string(lower));
    return it == functionIndex_.end() ? -1 : it->second;
}

bool Calc::isFunction(std::string_view name) const { return findFunction(lowerName(name)) >= 0; }

void Calc::markPure(std::string_view functionName) {
    const int id = findFunction(lowerName(functionName));
    if (id < 0) return;
    functions_[static_cast<size_t>(id)].pure = true;
    ++definitions_;
}

bool Calc::pureExpr(const Expr& e, int depth) const {
    if (depth > kPureDepthLimit) return false;  // a body calling itself, or nearly so
    for (const Node& nd : e.nodes) {
        if (nd.op == Op::Var || nd.op == Op::TextVar) return false;
        if (nd.op != Op::Call) continue;
        const Function& f = functions_[static_cast<size_t>(nd.b)];
        if (f.byteSource != nullptr) continue;
        if (f.fn != nullptr ? !f.pure : (f.body == nullptr || !pureExpr(*f.body, depth + 1))) return false;
    }
    return true;
}

bool Calc::isPure(Handle h) const { return valid(h) && pureExpr(*formulas_[static_cast<size_t>(h)], 0); }

bool Calc::namesVariable(std::string_view functionName) const {
    const int id = findFunction(lowerName(functionName));
    return id >= 0 && functions_[static_cast<size_t>(id)].pre != nullptr;
}

// --- functions ---

namespace {

bool identStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool identChar(char c) { return identStart(c) || (c >= '0' && c <= '9') || c == '.'; }

bool validName(std::string_view n) {
    if (n.empty() || !identStart(n[0])) return false;
    for (size_t i = 1; i < n.size(); ++i)
        if (!identChar(n[i]) && !(n[i] == '$' && i + 1 == n.size())) return false;
    return true;
}

// The closing parenthesis matching the one at `open`, skipping quoted text; npos if none.
size_t matchingParen(std::string_view s, size_t open) {
    int level = 0;
    char quote = 0;
    for (size_t i = open; i < s.size(); ++i) {
        const char c = s[i];
        if (quote) {
            if (c == quote) quote = 0;
        } else if (c == '\'' || c == '"') {
            quote = c;
        } else if (c == '(') {
            ++level;
        } else if (c == ')') {
            if (--level == 0) return i;
        }
    }
    return std::string_view::npos;
}

}  // namespace

bool Calc::defineFunction(std::string_view prototype, NativeFn fn, void* user) {
    ++definitions_;
    clearError();
    const std::string_view proto = trim(prototype);
    const size_t open = proto.find('(');
    if (open == std::string_view::npos) {
        fail(kInvalid);
        return false;
    }
    const std::string_view name = trim(proto.substr(0, open));
    if (!validName(name)) {
        fail(kInvalid);
        return false;
    }
    const size_t close = matchingParen(proto, open);
    if (close == std::string_view::npos) {
        fail(kParenthesis);
        return false;
    }
    std::string_view body;
    const std::string_view after = trim(proto.substr(close + 1));
    if (!after.empty()) {
        if (after[0] != '=') {
            fail(kInvalid);
            return false;
        }
        body = trim(after.substr(1));
    }
    if (fn == nullptr && body.empty()) {
        fail(kInvalid);
        return false;
    }

    Function f;
    f.name = std::string(name);
    f.fn = fn;
    f.user = user;
    const std::string_view paramList = trim(proto.substr(open + 1, close - open - 1));
    if (paramList.empty()) {
        f.minArgs = 0;
        f.maxArgs = kMaxParams;
        f.variadic = true;
    } else if (std::all_of(paramList.begin(), paramList.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        int n = 0;
        std::from_chars(paramList.data(), paramList.data() + paramList.size(), n);
        if (n > kMaxParams) {
            fail(kArgCount, name);
            return false;
        }
        f.minArgs = f.maxArgs = n;
        f.isText.assign(static_cast<size_t>(n), 0);
        f.hasDefault.assign(static_cast<size_t>(n), 0);
        f.defaultValue.assign(static_cast<size_t>(n), 0.0);
        f.defaultText.assign(static_cast<size_t>(n), std::string{});
        for (int i = 0; i < n; ++i) f.params.push_back("#" + std::to_string(i));
    } else {
        // Named parameters: name[$][=default], split at top-level commas.
        std::string_view rest = paramList;
        while (true) {
            size_t cut = 0;
            char quote = 0;
            for (; cut < rest.size(); ++cut) {
                const char c = rest[cut];
                if (quote) {
                    if (c == quote) quote = 0;
                } else if (c == '\'' || c == '"') {
                    quote = c;
                } else if (c == ',') {
                    break;
                }
            }
            std::string_view item = trim(rest.substr(0, cut));
            std::string_view def;
            bool hasDef = false;
            const size_t eq = item.find('=');
            if (eq != std::string_view::npos) {
                def = trim(item.substr(eq + 1));
                item = trim(item.substr(0, eq));
                hasDef = true;
            }
            if (!validName(item) || f.params.size() >= kMaxParams) {
                fail(kInvalid, item);
                return false;
            }
            const bool text = item.back() == '$';
            if (text) item.remove_suffix(1);
            f.params.push_back(lowerName(item));
            f.isText.push_back(text ? 1 : 0);
            f.hasDefault.push_back(hasDef ? 1 : 0);
            double dv = 0;
            std::string dt;
            if (hasDef) {
                if (text) {
                    if (def.size() < 2 || (def.front() != '\'' && def.front() != '"') || def.back() != def.front()) {
                        fail(kArgType, name);
                        return false;
                    }
                    dt = std::string(def.substr(1, def.size() - 2));
                } else {
                    char* end = nullptr;
                    const std::string copy(def);
                    dv = std::strtod(copy.c_str(), &end);
                    if (copy.empty() || *end != 0) {
                        fail(kArgType, name);
                        return false;
                    }
                }
            }
            f.defaultValue.push_back(dv);
            f.defaultText.push_back(std::move(dt));
            if (cut >= rest.size()) break;
            rest.remove_prefix(cut + 1);
        }
        f.maxArgs = static_cast<int>(f.params.size());
        f.minArgs = 0;
        for (int i = 0; i < f.maxArgs; ++i)
            if (!f.hasDefault[static_cast<size_t>(i)]) f.minArgs = i + 1;
    }

    for (const uint8_t text : f.isText) f.hasText = f.hasText || text != 0;
    const std::string key = lowerName(name);
    const int existing = findFunction(key);
    if (existing < 0 && static_cast<int>(functions_.size()) >= capacities_.functions) {
        fail(kSpaceFull);
        return false;
    }
    if (!body.empty()) {
        Expr* compiled = compile(body, &f, true);
        if (compiled == nullptr) return false;
        f.body.reset(compiled);
    }
    if (existing >= 0) {
        Function& old = functions_[static_cast<size_t>(existing)];
        f.pre = old.pre;
        f.preUser = old.preUser;
        old = std::move(f);
    } else {
        functionIndex_.emplace(key, static_cast<int>(functions_.size()));
        functions_.push_back(std::move(f));
    }
    return true;
}

bool Calc::preParse(std::string_view functionName, PreParseFn fn, void* user) {
    ++definitions_;
    const int id = findFunction(lowerName(functionName));
    if (id < 0) {
        fail(kUndefinedFunction, functionName);
        return false;
    }
    functions_[static_cast<size_t>(id)].pre = fn;
    functions_[static_cast<size_t>(id)].preUser = user;
    return true;
}

bool Calc::bindByte(std::string_view functionName, const uint8_t* source) {
    ++definitions_;
    const int id = findFunction(lowerName(functionName));
    if (id < 0) {
        fail(kUndefinedFunction, functionName);
        return false;
    }
    Function& f = functions_[static_cast<size_t>(id)];
    if (f.fn == nullptr || f.minArgs > 0) return false;
    f.byteSource = source;
    return true;
}

bool Calc::alias(std::string_view name, std::string_view text) {
    if (!validName(trim(name))) {
        fail(kInvalid, name);
        return false;
    }
    const std::string key = lowerName(trim(name));
    if (!aliases_.count(key) && static_cast<int>(aliases_.size()) >= capacities_.aliases) {
        fail(kSpaceFull);
        return false;
    }
    aliases_[key] = std::string(text);
    return true;
}

// --- variables ---

int Calc::defineVariable(std::string_view definition) {
    clearError();
    const size_t eq = definition.find('=');
    if (eq == std::string_view::npos) {
        fail(kInvalid, definition);
        return -1;
    }
    std::string_view name = trim(definition.substr(0, eq));
    const bool text = !name.empty() && name.back() == '$';
    if (text) name.remove_suffix(1);
    if (!validName(name) || name.back() == '$') {
        fail(kInvalid, name);
        return -1;
    }
    const std::string_view valueText = definition.substr(eq + 1);
    double value = 0;
    if (!text) {
        const std::string_view v = trim(valueText);
        if (!v.empty()) {
            const std::unique_ptr<Expr> e(compile(v, nullptr, false));
            if (e == nullptr) return -1;
            if (e->isText) {
                fail(kArgType, name);
                return -1;
            }
            if (active_ == 0) {
                steps_ = 0;
                depth_ = 0;
                argTop_ = 0;
            }
            ++active_;
            value = run(*e);
            --active_;
            if (error_ != kOk) return -1;
        }
    }
    const std::string key = lowerName(name);
    int handle = variableHandle(key);
    if (handle < 0) {
        if (variableCount_ >= capacities_.variables) {
            fail(kSpaceFull);
            return -1;
        }
        if (!freeVariables_.empty()) {
            handle = freeVariables_.back();
            freeVariables_.pop_back();
        } else {
            handle = static_cast<int>(variables_.size());
            variables_.emplace_back();
        }
        Variable& v = variables_[static_cast<size_t>(handle)];
        v.name = std::string(name);
        v.live = true;
        variableIndex_[key] = handle;
        ++variableCount_;
    }
    Variable& v = variables_[static_cast<size_t>(handle)];
    v.isText = text;
    v.value = value;
    v.text = text ? std::string(valueText) : std::string{};
    return handle;
}

void Calc::releaseVariable(int handle) {
    if (handle < 0 || handle >= static_cast<int>(variables_.size())) return;
    Variable& v = variables_[static_cast<size_t>(handle)];
    if (!v.live) return;
    variableIndex_.erase(lowerName(v.name));
    v = Variable{};
    freeVariables_.push_back(handle);
    --variableCount_;
}

int Calc::variableHandle(std::string_view name) const {
    std::string key = lowerName(trim(name));
    if (!key.empty() && key.back() == '$') key.pop_back();
    const auto it = variableIndex_.find(key);
    return it == variableIndex_.end() ? -1 : it->second;
}

double Calc::variable(int handle) const {
    if (handle < 0 || handle >= static_cast<int>(variables_.size())) return 0;
    return variables_[static_cast<size_t>(handle)].value;
}

void Calc::setVariable(int handle, double value) {
    if (handle < 0 || handle >= static_cast<int>(variables_.size())) return;
    variables_[static_cast<size_t>(handle)].value = value;
}

std::string_view Calc::variableText(int handle) const {
    if (handle < 0 || handle >= static_cast<int>(variables_.size())) return {};
    return variables_[static_cast<size_t>(handle)].text;
}

void Calc::setVariableText(int handle, std::string_view text) {
    if (handle < 0 || handle >= static_cast<int>(variables_.size())) return;
    Variable& v = variables_[static_cast<size_t>(handle)];
    if (!v.live) return;
    if (text.size() > kMaxTextLength) {
        fail(kLibrary, "Text longer than " + std::to_string(kMaxTextLength) + " characters");
        text = text.substr(0, kMaxTextLength);
    }
    if (active_ > 0) spend(static_cast<int64_t>(text.size() / kTextBytesPerStep));
    v.text = std::string(text);
    v.isText = true;
}

bool Calc::variableIsText(int handle) const {
    return handle >= 0 && handle < static_cast<int>(variables_.size()) && variables_[static_cast<size_t>(handle)].isText;
}

// --- formulas ---

Handle Calc::store(std::unique_ptr<Expr> e) {
    if (!freeFormulas_.empty()) {
        const Handle h = freeFormulas_.back();
        freeFormulas_.pop_back();
        formulas_[static_cast<size_t>(h)] = std::move(e);
        return h;
    }
    if (static_cast<int>(formulas_.size()) > capacities_.formulas) {
        fail(kSpaceFull);
        return 0;
    }
    formulas_.push_back(std::move(e));
    return static_cast<Handle>(formulas_.size() - 1);
}

Handle Calc::parse(std::string_view text) {
    clearError();
    Expr* e = compile(text, nullptr, false);
    if (e == nullptr) return 0;
    return store(std::unique_ptr<Expr>(e));
}

bool Calc::valid(Handle h) const {
    return h > 0 && h < static_cast<Handle>(formulas_.size()) && formulas_[static_cast<size_t>(h)] != nullptr;
}

void Calc::release(Handle h) {
    if (!valid(h) || active_ > 0) return;  // never while a formula runs
    formulas_[static_cast<size_t>(h)].reset();
    freeFormulas_.push_back(h);
}

bool Calc::isText(Handle h) const { return valid(h) && formulas_[static_cast<size_t>(h)]->isText; }

double Calc::evaluate(Handle h) {
    if (active_ == 0) {
        error_ = kOk;
        errorData_.clear();
        steps_ = 0;
        depth_ = 0;
        argTop_ = 0;
    } else if (error_ != kOk) {
        return 0;
    }
    if (!valid(h)) {
        fail(kInvalid);
        return 0;
    }
    // A nested evaluation runs under a callback's frames too: it costs more depth.
    const int extra = active_ > 0 ? kNestedEvaluationCost : 0;
    depth_ += extra;
    ++active_;
    const double r = run(*formulas_[static_cast<size_t>(h)]);
    --active_;
    depth_ -= extra;
    return error_ != kOk ? 0.0 : r;
}

std::string Calc::evaluateText(Handle h) {
    if (!valid(h)) {
        clearError();
        fail(kInvalid);
        return {};
    }
    const Expr& e = *formulas_[static_cast<size_t>(h)];
    if (!e.isText) return formatNumber(evaluate(h));
    if (active_ == 0) {
        error_ = kOk;
        errorData_.clear();
        steps_ = 0;
        depth_ = 0;
        argTop_ = 0;
    }
    std::string out;
    ++active_;
    evalText(e, e.root, out);
    --active_;
    return out;
}

Calc::Result Calc::eval(std::string_view text) {
    Result r;
    const Handle h = parse(text);
    if (h != 0) {
        r.isText = isText(h);
        if (r.isText) {
            const Expr& e = *formulas_[static_cast<size_t>(h)];
            switch (e.nodes[static_cast<size_t>(e.root)].op) {
                case Op::TextLit: r.kind = TextKind::Literal; break;
                case Op::TextVar:
                case Op::TextParam: r.kind = TextKind::Variable; break;
                case Op::TextJoin: r.kind = TextKind::Join; break;
                default: r.kind = TextKind::Number; break;
            }
            r.text = evaluateText(h);
        }
        else
            r.value = evaluate(h);
    }
    r.error = error_;
    r.message = errorMessage();
    const int keep = error_;
    const std::string keepData = errorData_;
    release(h);
    error_ = keep;
    errorData_ = keepData;
    return r;
}

// --- evaluation ---

double Calc::run(const Expr& e) {
    const int cost = e.height + 2;
    if (depth_ + cost > depthLimit_) {
        fail(kLibrary, "Evaluation stopped: formulas nested too deeply");
        return 0;
    }
    depth_ += cost;
    const double r = e.isText ? 0.0 : eval(e, e.root);
    depth_ -= cost;
    return r;
}

double Calc::eval(const Expr& e, int n) {
    const Node& nd = e.nodes[static_cast<size_t>(n)];
    // Binary operators: the left side first, always.
#define QUILLMER_BINARY(expression)    \
    {                                  \
        const double x = eval(e, nd.a); \
        const double y = eval(e, nd.b); \
        return expression;             \
    }
    switch (nd.op) {
        case Op::Num:
            return nd.num;
        case Op::Var:
            return variables_[static_cast<size_t>(nd.a)].value;
        case Op::Param:
            return frame_[nd.a];
        case Op::Call: {
            const Function& f = functions_[static_cast<size_t>(nd.b)];
            // A context reader: a leaf, so it spends no step; after an error its value is lost anyway.
            if (f.byteSource != nullptr && nd.count == 0) return *f.byteSource;
            return call(e, nd);
        }
        case Op::Neg:
            return -eval(e, nd.a);
        case Op::Not:
            return eval(e, nd.a) == 0 ? 1.0 : 0.0;
        case Op::Fact:
            return factorial(eval(e, nd.a));
        case Op::Add:
            QUILLMER_BINARY(x + y)
        case Op::Sub:
            QUILLMER_BINARY(x - y)
        case Op::Mul:
            QUILLMER_BINARY(x * y)
        case Op::Div:
            QUILLMER_BINARY(y == 0 ? failed(kDivisionByZero) : x / y)
        case Op::IDiv:
            QUILLMER_BINARY(std::trunc(y) == 0 ? failed(kIntegerDivisionByZero) : std::trunc(std::trunc(x) / std::trunc(y)))
        case Op::Mod:
            QUILLMER_BINARY(y == 0 ? failed(kIntegerDivisionByZero) : std::fmod(x, y))
        case Op::Pow:
            QUILLMER_BINARY(((x == 0 && y < 0) || (x < 0 && y != std::floor(y))) ? failed(kExponent) : std::pow(x, y))
        case Op::Eq:
            QUILLMER_BINARY(x == y ? 1.0 : 0.0)
        case Op::Ne:
            QUILLMER_BINARY(x != y ? 1.0 : 0.0)
        case Op::Lt:
            QUILLMER_BINARY(x < y ? 1.0 : 0.0)
        case Op::Le:
            QUILLMER_BINARY(x <= y ? 1.0 : 0.0)
        case Op::Gt:
            QUILLMER_BINARY(x > y ? 1.0 : 0.0)
        case Op::Ge:
            QUILLMER_BINARY(x >= y ? 1.0 : 0.0)
        case Op::And:
            QUILLMER_BINARY((x != 0 && y != 0) ? 1.0 : 0.0)
        case Op::Or:
            QUILLMER_BINARY((x != 0 || y != 0) ? 1.0 : 0.0)
        case Op::Xor:
            QUILLMER_BINARY(((x != 0) != (y != 0)) ? 1.0 : 0.0)
        default:
            return 0;
    }
#undef QUILLMER_BINARY
}

double Calc::failed(int code) {
    fail(code);
    return 0;
}

double Calc::factorial(double x) {
    if (x < 0 || x != std::floor(x)) return failed(kInvalid);
    if (x > 170) return failed(kFactorialOverflow);
    double r = 1;
    for (int i = 2; i <= static_cast<int>(x); ++i) r *= i;
    return r;
}

void Calc::evalText(const Expr& e, int n, std::string& out) {
    if (error_ != kOk) return;
    const Node& nd = e.nodes[static_cast<size_t>(n)];
    std::string_view piece;
    std::string number;
    switch (nd.op) {
        case Op::TextLit:
            piece = e.texts[static_cast<size_t>(nd.a)];
            break;
        case Op::TextVar:
            piece = variables_[static_cast<size_t>(nd.a)].text;
            break;
        case Op::TextParam:
            piece = textFrame_[nd.a];
            break;
        case Op::TextJoin:
            evalText(e, nd.a, out);
            evalText(e, nd.b, out);
            return;
        case Op::TextNum:
            number = formatNumber(eval(e, nd.a));
            piece = number;
            break;
        default:
            number = formatNumber(eval(e, n));
            piece = number;
            break;
    }
    if (out.size() + piece.size() > kMaxTextLength) {
        fail(kLibrary, "Text longer than " + std::to_string(kMaxTextLength) + " characters");
        return;
    }
    if (!spend(static_cast<int64_t>(piece.size() / kTextBytesPerStep))) return;  // copying is work too
    out += piece;
}

double Calc::call(const Expr& e, const Node& nd) {
    if (error_ != kOk) return 0;
    if (++steps_ > stepBudget_) {
        fail(kLibrary, "Evaluation stopped: more than " + std::to_string(stepBudget_) + " steps");
        return 0;
    }
    const Function& f = functions_[static_cast<size_t>(nd.b)];
    const int given = nd.count;
    if (given < f.minArgs || given > f.maxArgs) {
        fail(kArgCount, f.name);
        return 0;
    }
    const int total = f.variadic ? given : f.maxArgs;
    if (total == 0 && f.fn != nullptr) {  // the context readers: nothing to gather
        const Args a{*this, f.user, nullptr, nullptr, 0};
        return callNative(f, a);
    }
    const size_t base = argTop_;
    if (base + static_cast<size_t>(total) > kArgStackSize) {
        fail(kLibrary, "Evaluation stopped: formulas nested too deeply");
        return 0;
    }
    argTop_ += static_cast<size_t>(total);
    double* v = &argStack_[base];
    std::string_view* t = &textStack_[base];
    const int32_t* argNodes = e.args.data() + nd.a;
    if (!f.hasText) {
        for (int i = 0; i < given; ++i) v[i] = eval(e, argNodes[i]);
    } else {
        gatherWithText(e, f, argNodes, given, base, v, t);
    }
    for (int i = given; i < total; ++i) {
        v[i] = f.defaultValue[static_cast<size_t>(i)];
        t[i] = f.defaultText[static_cast<size_t>(i)];
    }
    double r = 0;
    if (error_ == kOk) {
        if (f.fn != nullptr) {
            const Args a{*this, f.user, v, t, total};
            r = callNative(f, a);
        } else {
            const double* savedFrame = frame_;
            const std::string_view* savedText = textFrame_;
            frame_ = v;
            textFrame_ = t;
            r = run(*f.body);
            frame_ = savedFrame;
            textFrame_ = savedText;
        }
    }
    argTop_ = base;
    return r;
}

// Nothing a callback does may leave the evaluation by an exception (it could only be
// running out of memory): it becomes an error of the formula.
double Calc::callNative(const Function& f, const Args& a) {
    try {
        return f.fn(a);
    } catch (...) {
        fail(kLibrary, "Out of memory in " + f.name);
        return 0;
    }
}

void Calc::gatherWithText(const Expr& e, const Function& f, const int32_t* argNodes, int given, size_t base, double* v,
                          std::string_view* t) {
    for (int i = 0; i < given; ++i) {
        if (!f.variadic && f.isText[static_cast<size_t>(i)]) {
            v[i] = 0;
            const Node& an = e.nodes[static_cast<size_t>(argNodes[i])];
            if (an.op == Op::TextLit) {
                t[i] = e.texts[static_cast<size_t>(an.a)];
            } else if (an.op == Op::TextVar) {
                t[i] = variables_[static_cast<size_t>(an.a)].text;
            } else if (an.op == Op::TextParam) {
                t[i] = textFrame_[an.a];
            } else {
                std::string& s = textScratch_[base + static_cast<size_t>(i)];
                s.clear();
                evalText(e, argNodes[i], s);
                t[i] = s;
            }
        } else {
            v[i] = eval(e, argNodes[i]);
            t[i] = {};
        }
    }
}

}  // namespace quillmer::expr
