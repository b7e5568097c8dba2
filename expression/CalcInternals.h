#pragma once
// The compiled form of a formula, shared by the parser and the evaluator.

#include <string>
#include <string_view>
#include <vector>

#include "expression/Calc.h"

namespace quillmer::expr {

enum class Op : uint8_t {
    Num, Var, Param, Call,
    Neg, Not, Fact,
    Add, Sub, Mul, Div, IDiv, Mod, Pow,
    Eq, Ne, Lt, Le, Gt, Ge, And, Or, Xor,
    TextLit, TextVar, TextParam, TextJoin, TextNum,
};

// Children are node indexes (a, b); a call keeps its argument nodes in Expr::args from a,
// `count` of them, and the function's entry in b.
struct Calc::Node {
    Op op = Op::Num;
    int32_t a = 0;
    int32_t b = 0;
    int32_t count = 0;
    double num = 0;
};

struct Calc::Expr {
    std::vector<Node> nodes;
    std::vector<int32_t> args;
    std::vector<std::string> texts;
    int32_t root = 0;
    int height = 1;  // nodes on the longest path from the root
    bool isText = false;
};

struct Calc::Function {
    std::string name;  // as defined
    NativeFn fn = nullptr;
    void* user = nullptr;
    int minArgs = 0;
    int maxArgs = 0;
    bool variadic = false;
    bool hasText = false;  // some parameter takes text
    std::vector<std::string> params;  // lower case
    std::vector<uint8_t> isText;
    std::vector<uint8_t> hasDefault;
    std::vector<double> defaultValue;
    std::vector<std::string> defaultText;
    std::unique_ptr<Expr> body;
    PreParseFn pre = nullptr;
    void* preUser = nullptr;
    const uint8_t* byteSource = nullptr;
    bool pure = false;  // a native marked pure
};

struct Calc::Variable {
    std::string name;
    double value = 0;
    std::string text;
    bool isText = false;
    bool live = false;
};

std::string lowerName(std::string_view name);
std::string_view trim(std::string_view s);
std::string formatNumber(double v);

}  // namespace quillmer::expr
