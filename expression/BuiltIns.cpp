// The functions the language brings before any program defines its own: arithmetic,
// RND and the trigonometric and hyperbolic families with their error codes.

#include <cmath>
#include <numbers>

#include "expression/Calc.h"
#include "expression/CalcInternals.h"

namespace quillmer::expr {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kTiny = 1e-12;  // a cosine this small is a pole of SEC

double toRadians(const Args& a, double x) {
    switch (a.calc.trigMode()) {
        case TrigMode::Degree:
            return x * kPi / 180.0;
        case TrigMode::Grad:
            return x * kPi / 200.0;
        default:
            return x;
    }
}
double fromRadians(const Args& a, double x) {
    switch (a.calc.trigMode()) {
        case TrigMode::Degree:
            return x * 180.0 / kPi;
        case TrigMode::Grad:
            return x * 200.0 / kPi;
        default:
            return x;
    }
}
double failed(const Args& a, int code) {
    a.calc.fail(code);
    return 0;
}

struct BuiltIn {
    const char* prototype;
    NativeFn fn;
};

const BuiltIn kBuiltIns[] = {
    {"abs(1)", [](const Args& a) { return std::fabs(a[1]); }},
    {"int(1)", [](const Args& a) { return std::floor(a[1]); }},
    {"fix(1)", [](const Args& a) { return std::trunc(a[1]); }},
    {"round(x,d=0)",
     [](const Args& a) {
         const double scale = std::pow(10.0, std::trunc(a[2]));
         return std::round(a[1] * scale) / scale;
     }},
    {"floor(1)", [](const Args& a) { return std::floor(a[1]); }},
    {"ceil(1)", [](const Args& a) { return std::ceil(a[1]); }},
    {"sgn(1)", [](const Args& a) { return a[1] > 0 ? 1.0 : a[1] < 0 ? -1.0 : 0.0; }},
    {"min()",
     [](const Args& a) {
         if (a.count == 0) return 0.0;
         double m = a[1];
         for (int i = 2; i <= a.count; ++i) m = std::min(m, a[i]);
         return m;
     }},
    {"max()",
     [](const Args& a) {
         if (a.count == 0) return 0.0;
         double m = a[1];
         for (int i = 2; i <= a.count; ++i) m = std::max(m, a[i]);
         return m;
     }},
    {"mod(2)",
     [](const Args& a) {
         if (a[2] == 0) return failed(a, kIntegerDivisionByZero);
         return std::fmod(a[1], a[2]);
     }},
    {"iif(c,t,f=0)", [](const Args& a) { return a[1] != 0 ? a[2] : a[3]; }},
    {"rnd()",
     [](const Args& a) {
         const double r = a.calc.random();
         return a.count >= 1 ? r * a[1] : r;
     }},
    {"sqr(1)", [](const Args& a) { return a[1] < 0 ? failed(a, kSqr) : std::sqrt(a[1]); }},
    {"sqrt(1)", [](const Args& a) { return a[1] < 0 ? failed(a, kSqr) : std::sqrt(a[1]); }},
    {"exp(1)", [](const Args& a) { return std::exp(a[1]); }},
    {"log(1)", [](const Args& a) { return a[1] <= 0 ? failed(a, kLog) : std::log(a[1]); }},
    {"ln(1)", [](const Args& a) { return a[1] <= 0 ? failed(a, kLog) : std::log(a[1]); }},
    {"log2(1)", [](const Args& a) { return a[1] <= 0 ? failed(a, kLog2) : std::log2(a[1]); }},
    {"log10(1)", [](const Args& a) { return a[1] <= 0 ? failed(a, kLog10) : std::log10(a[1]); }},
    {"sin(1)", [](const Args& a) { return std::sin(toRadians(a, a[1])); }},
    {"cos(1)", [](const Args& a) { return std::cos(toRadians(a, a[1])); }},
    {"tan(1)", [](const Args& a) { return std::tan(toRadians(a, a[1])); }},
    {"sec(1)",
     [](const Args& a) {
         const double c = std::cos(toRadians(a, a[1]));
         return std::fabs(c) < kTiny ? failed(a, kSec) : 1.0 / c;
     }},
    {"csc(1)",
     [](const Args& a) {
         const double s = std::sin(toRadians(a, a[1]));
         return std::fabs(s) < kTiny ? failed(a, kCsc) : 1.0 / s;
     }},
    {"cot(1)",
     [](const Args& a) {
         const double x = toRadians(a, a[1]);
         const double s = std::sin(x);
         return std::fabs(s) < kTiny ? failed(a, kCot) : std::cos(x) / s;
     }},
    {"asin(1)",
     [](const Args& a) { return std::fabs(a[1]) > 1 ? failed(a, kAsin) : fromRadians(a, std::asin(a[1])); }},
    {"acos(1)",
     [](const Args& a) { return std::fabs(a[1]) > 1 ? failed(a, kAcos) : fromRadians(a, std::acos(a[1])); }},
    {"atan(1)", [](const Args& a) { return fromRadians(a, std::atan(a[1])); }},
    {"atn(1)", [](const Args& a) { return fromRadians(a, std::atan(a[1])); }},
    {"atan2(2)", [](const Args& a) { return fromRadians(a, std::atan2(a[1], a[2])); }},
    {"sinh(1)", [](const Args& a) { return std::sinh(a[1]); }},
    {"cosh(1)", [](const Args& a) { return std::cosh(a[1]); }},
    {"tanh(1)", [](const Args& a) { return std::tanh(a[1]); }},
    {"sech(1)", [](const Args& a) { return 1.0 / std::cosh(a[1]); }},
    {"csch(1)", [](const Args& a) { return a[1] == 0 ? failed(a, kCsch) : 1.0 / std::sinh(a[1]); }},
    {"coth(1)", [](const Args& a) { return a[1] == 0 ? failed(a, kCoth) : 1.0 / std::tanh(a[1]); }},
    {"asinh(1)", [](const Args& a) { return std::asinh(a[1]); }},
    {"acosh(1)", [](const Args& a) { return a[1] < 1 ? failed(a, kAcosh) : std::acosh(a[1]); }},
    {"atanh(1)", [](const Args& a) { return std::fabs(a[1]) >= 1 ? failed(a, kAtanh) : std::atanh(a[1]); }},
    {"acoth(1)",
     [](const Args& a) { return std::fabs(a[1]) <= 1 ? failed(a, kAcoth) : 0.5 * std::log((a[1] + 1) / (a[1] - 1)); }},
    {"asech(1)",
     [](const Args& a) {
         const double x = a[1];
         return (x <= 0 || x > 1) ? failed(a, kAsech) : std::log((1 + std::sqrt(1 - x * x)) / x);
     }},
    {"acsch(1)",
     [](const Args& a) {
         const double x = a[1];
         return x == 0 ? failed(a, kAcsch) : std::asinh(1.0 / x);
     }},
};

}  // namespace

bool Calc::addBuiltIns() {
    bool ok = true;
    for (const BuiltIn& b : kBuiltIns) ok = defineFunction(b.prototype, b.fn, nullptr) && ok;
    // RND draws, and the circular functions follow the angle mode: neither is pure.
    for (const char* name : {"abs", "int", "fix", "round", "floor", "ceil", "sgn", "min", "max", "mod", "iif", "sqr", "sqrt",
                             "exp", "log", "ln", "log2", "log10", "sinh", "cosh", "tanh", "sech", "csch", "coth", "asinh",
                             "acosh", "atanh", "acoth", "asech", "acsch"})
        markPure(name);
    return ok;
}

}  // namespace quillmer::expr
