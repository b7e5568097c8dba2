#pragma once
// The formula language: a parser that compiles a line of text once into a flat tree of
// nodes, and an evaluator that runs it. Numbers are doubles; text exists only as the `$`
// parameters of functions and as text variables.
//
// Language:
// - numbers 12, 1.5, .5, 2e3, &H1F, &O17, &B101; text 'abc' or "abc" (only where a function
//   asks for text, joined with & or +).
// - operators, from the loosest: Or Xor || ; And && ; Not ; = == <> != < > <= >= ; + - ;
//   Mod ; \ (whole division) ; * / ; unary - + ; ^ (right to left) and postfix ! (factorial).
//   Comparisons and logic give 1 or 0; And, Or and Xor test for non-zero and evaluate both
//   sides. So -2^2 is -4, 2^3^2 is 512, 7 Mod 4 * 2 is 7 Mod 8.
// - names are case-insensitive; a name may hold letters, digits, `_` and `.`, and end in `$`.
//   A bare name is a parameter of the function being defined, a variable, or an alias.
// - a function is native (a callback) or has an "=" body. Its prototype gives the arity:
//   "F(2)" two numbers, "F()" any number, "F(a,b$,c=1,d$='x')" named, with text and defaults.
// - parentheses left open at the end of a function body are closed there (the stored
//   "Frac(x)=abs(abs(x)-int(abs(x))" needs that); in a formula they are error 2.
//
// Handles: a formula handle and a variable handle stay valid until released. Functions are
// called through their entry, so redefining a function changes what existing handles run.
//
// Evaluation never throws. An error stops the evaluation (no further function is called) and
// leaves a code and the name it concerns. Each top-level evaluation gets a step budget (one
// step per function call) and a depth limit, so a runaway formula ends with error 1.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quillmer::expr {

enum Error : int {
    kOk = 0,
    kLibrary = 1,  // the text is in errorData()
    kParenthesis = 2,
    kUndefinedVariable = 3,
    kBadBinary = 4,
    kBadOctal = 5,
    kBadHex = 6,
    kFactorialOverflow = 7,
    kQuotes = 8,
    kInvalid = 9,
    kSpaceFull = 10,
    kUndefinedFunction = 11,
    kArgCount = 12,
    kArgType = 13,
    kDivisionByZero = 14,
    kIntegerDivisionByZero = 15,
    kExponent = 16,
    kSqr = 17,
    kLog2 = 18,
    kLog10 = 19,
    kLog = 20,
    kAsin = 21,
    kAcos = 22,
    kSec = 23,
    kCsc = 24,
    kCot = 25,
    kCoth = 26,
    kCsch = 27,
    kAcosh = 28,
    kAtanh = 29,
    kAcoth = 30,
    kAsech = 31,
    kAcsch = 32,
};

// The words for an error code; `data` is the name it concerns.
std::string errorText(int code, std::string_view data);
// A number as text: up to 15 significant digits, "0" for zero.
std::string formatNumber(double v);

enum class TrigMode : int { Radian = 0, Degree = 1, Grad = 2 };

class Calc;

// What a native callback sees: parameter i at position i, counting from 1.
struct Args {
    Calc& calc;
    void* user;
    const double* values;          // values[0] is parameter 1
    const std::string_view* texts;  // the same positions; empty for a number parameter
    int count;

    double operator[](int i) const { return i >= 1 && i <= count ? values[i - 1] : 0.0; }
    std::string_view text(int i) const { return i >= 1 && i <= count ? texts[i - 1] : std::string_view{}; }
};
using NativeFn = double (*)(const Args&);
// Sees the first argument of a call as text and gives the text to parse in its place.
using PreParseFn = std::string (*)(Calc&, void* user, std::string_view firstArgument);

using Handle = int32_t;  // a formula; 0 is none

// The longest text a formula builds or a text variable holds.
constexpr size_t kMaxTextLength = 32768;

struct Capacities {
    int formulas = 8000;
    int functions = 802;
    int variables = 800;
    int aliases = 1200;
    int textSpace = 800;  // text literals of one formula
};

class Calc {
public:
    Calc();
    ~Calc();
    Calc(const Calc&) = delete;
    Calc& operator=(const Calc&) = delete;

    // Forgets everything and sets the capacities: formulas, functions, variables, aliases,
    // text literals per formula, as "8000,802,800,1200,800". The built-ins are defined again.
    void reset(std::string_view capacities = {});

    // A function from a prototype and a callback, or from "PROTOTYPE=BODY" with no callback.
    // Returns false and sets the error when the prototype or body won't compile.
    bool defineFunction(std::string_view prototype, NativeFn fn = nullptr, void* user = nullptr);
    bool preParse(std::string_view functionName, PreParseFn fn, void* user);
    // A function of no arguments whose value is the byte at `source`: evaluated without a
    // call (the evaluation context's readers). Its callback stays for anything else.
    bool bindByte(std::string_view functionName, const uint8_t* source);
    bool alias(std::string_view name, std::string_view text);
    bool isFunction(std::string_view name) const;
    // Marks a function pure: its value depends on its arguments alone, and whatever it
    // leaves behind comes out the same when it runs again on the same arguments. A native
    // is not pure unless marked; a body function is when its body is.
    void markPure(std::string_view functionName);
    // Every call in the formula is pure (bodies followed) and it reads no variable.
    bool isPure(Handle formula) const;
    // Counts the definitions made: what isPure said holds while this stays.
    uint64_t definitions() const { return definitions_; }
    // A function whose first argument names a variable (it has a pre-parse).
    bool namesVariable(std::string_view functionName) const;

    // "NAME=number" or "NAME$=text". Returns the handle, or -1.
    int defineVariable(std::string_view definition);
    void releaseVariable(int handle);
    int variableHandle(std::string_view name) const;  // -1 when undefined
    double variable(int handle) const;
    void setVariable(int handle, double value);
    std::string_view variableText(int handle) const;
    void setVariableText(int handle, std::string_view text);
    bool variableIsText(int handle) const;

    Handle parse(std::string_view text);
    double evaluate(Handle formula);
    std::string evaluateText(Handle formula);  // a text formula's text, else the number
    bool isText(Handle formula) const;
    void release(Handle formula);
    bool valid(Handle formula) const;

    // What a text formula is at its top: one quoted literal, one text variable (or text
    // parameter), a join of parts, or a number in text.
    enum class TextKind { None, Literal, Variable, Join, Number };

    // Parse, run and release, for a test of a formula: the value, or the text when it is text.
    struct Result {
        bool isText = false;
        TextKind kind = TextKind::None;
        double value = 0;
        std::string text;
        int error = kOk;
        std::string message;
    };
    Result eval(std::string_view text);

    int error() const { return error_; }
    const std::string& errorData() const { return errorData_; }
    void setErrorData(std::string_view data) { errorData_ = data; }
    std::string errorMessage() const { return errorText(error_, errorData_); }
    // From a callback: stops the evaluation with this error.
    void fail(int code, std::string_view data = {});
    void clearError();

    void setTrigMode(TrigMode mode) { trigMode_ = mode; }
    TrigMode trigMode() const { return trigMode_; }

    void setStepBudget(int64_t steps) { stepBudget_ = steps; }
    int64_t stepBudget() const { return stepBudget_; }
    int64_t stepsUsed() const { return steps_; }
    // Counts in evaluation levels: each node of the deepest path of a formula, each call.
    void setDepthLimit(int levels) { depthLimit_ = levels; }
    // Spends steps from a callback (a loop pass); false once the budget is gone.
    bool spend(int64_t steps);

    // The source of RND: 0 <= value < 1.
    using RandomFn = double (*)(void* user);
    void setRandom(RandomFn fn, void* user) {
        random_ = fn;
        randomUser_ = user;
    }
    double random() { return random_(randomUser_); }

    struct Node;
    struct Expr;
    struct Function;
    struct Variable;

private:
    friend class Parser;
    bool addBuiltIns();
    int findFunction(std::string_view lowerName) const;
    Handle store(std::unique_ptr<Expr> e);
    Expr* compile(std::string_view text, const Function* owner, bool lenient);

    bool pureExpr(const Expr& e, int depth) const;
    double run(const Expr& e);
    double eval(const Expr& e, int n);
    double call(const Expr& e, const Node& nd);
    void evalText(const Expr& e, int n, std::string& out);
    double callNative(const Function& f, const Args& a);
    double failed(int code);
    double factorial(double x);
    void gatherWithText(const Expr& e, const Function& f, const int32_t* argNodes, int given, size_t base, double* v,
                        std::string_view* t);

    std::vector<std::unique_ptr<Expr>> formulas_;  // by handle; 0 unused
    std::vector<Handle> freeFormulas_;
    std::vector<Function> functions_;
    std::unordered_map<std::string, int> functionIndex_;
    std::vector<Variable> variables_;
    std::vector<int> freeVariables_;
    std::unordered_map<std::string, int> variableIndex_;
    std::unordered_map<std::string, std::string> aliases_;
    Capacities capacities_;
    int variableCount_ = 0;
    uint64_t definitions_ = 0;

    int error_ = kOk;
    std::string errorData_;
    TrigMode trigMode_ = TrigMode::Radian;

    int64_t stepBudget_ = 1'000'000;
    int64_t steps_ = 0;
    int depthLimit_ = 4000;
    int depth_ = 0;
    int active_ = 0;  // evaluations under way (nesting)

    // Arguments of calls under way, and the frame of the body function running.
    std::vector<double> argStack_;
    std::vector<std::string_view> textStack_;
    std::vector<std::string> textScratch_;
    size_t argTop_ = 0;
    const double* frame_ = nullptr;
    const std::string_view* textFrame_ = nullptr;

    RandomFn random_;
    void* randomUser_ = nullptr;
    uint64_t randomState_ = 0x2545F4914F6CDD1Dull;
};

}  // namespace quillmer::expr
