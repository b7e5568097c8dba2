// The mailbox, flow and timing families.

#include <string>

#include "engine/Durations.h"
#include "expression/RuntimeStores.h"

namespace quillmer {

using expr::Args;
using namespace fx;

namespace {

Mailbox& box(const Args& a) { return rt(a).mailbox(rt(a).EvalModuleId); }
FormulaRuntime::Stores& st(const Args& a) { return rt(a).state(); }
int uid(const Args& a) { return rt(a).uidOf(rt(a).EvalModuleId); }

double setLed(const Args& a, double value) {
    box(a).ledBits = fold32(value);
    box(a).flags |= kFlagLed;
    return value;
}

// Runs the formulas of a List or a Loop pass, Ix counting from 0.
bool runList(const Args& a, int first) {
    FormulaRuntime& r = rt(a);
    for (int k = first; k <= a.count; ++k) {
        st(a).ix.back() = k - first;
        Vocabulary::runFormula(r, a[k]);
        if (r.calc().error() != expr::kOk) return false;
    }
    return true;
}

double inValue(const Args& a, int n) { return rt(a).EvalIn[static_cast<size_t>(n)]; }

// The tick count of a TSet time code: 0 is an eighth (12 ticks), 1 a quarter (24).
int periodOf(int code) {
    if (code < 0 || code >= static_cast<int>(DurationReload.size())) code = kFallbackCode;
    return DurationReload[static_cast<size_t>(code)];
}

const Definition kMailbox[] = {
    {"OUT(1)",
     [](const Args& a) {
         Mailbox& m = box(a);
         m.outValue = byte127(a.values[0]);
         m.flags |= kFlagOut;
         return static_cast<double>(m.outValue);
     }},
    {"Prev()", [](const Args& a) { return static_cast<double>(box(a).outValue); }},
    {"LED(1)", [](const Args& a) { return setLed(a, a[1]); }},
    {"nLED(1)",
     [](const Args& a) {
         Mailbox& m = box(a);
         if (a[1] < 0)
             m.ledNumberNegative = static_cast<uint8_t>(cut(-a[1], 0, 32));
         else
             m.ledNumber = static_cast<uint8_t>(cut(a[1], 0, 32));
         m.flags |= kFlagLedNumber;
         return a[1];
     }},
    {"ClkLED(2)", [](const Args& a) { return setLed(a, a[1] != 0 ? a[2] + 65536 : a[2]); }},
    {"GOTO(1)",
     [](const Args& a) {
         box(a).gotoTarget = byte127(a[1]);
         box(a).flags |= kFlagGoto;
         return static_cast<double>(box(a).gotoTarget);
     }},
    {"ToolTip(Clk$='Strobe', In1$='In1', In2$='In2', In3$='In3', In4$='In4', In5$='In5', In6$='In6', "
     "In7$='In7', In8$='In8', In9$='In9', In10$='In10', In11$='In11', In12$='In12', In13$='In13', "
     "In14$='In14', In15$='In15', In16$='In16')",
     [](const Args& a) {
         Mailbox& m = box(a);
         for (int i = 0; i < 17; ++i) m.text->toolTips[static_cast<size_t>(i)] = a.text(i + 1);
         m.flags |= kFlagToolTip;
         return 0.0;
     }},
    {"TxtLabel(s$)",
     [](const Args& a) {
         box(a).text->label = a.text(1);
         box(a).flags |= kFlagLabel;
         return 0.0;
     }},
    {"NumLabel(n)",
     [](const Args& a) {
         box(a).text->label = expr::formatNumber(a[1]);
         box(a).flags |= kFlagLabel;
         return a[1];
     }},
    {"Me()", [](const Args& a) { return static_cast<double>(rt(a).EvalFormula); }},
    {"UID()", [](const Args& a) { return static_cast<double>(uid(a)); }},
    {"mID()", [](const Args& a) { return static_cast<double>(rt(a).EvalModuleId / 100); }},
    {"InC()", [](const Args& a) { return static_cast<double>(rt(a).EvalInC); }},
    {"In1()", [](const Args& a) { return inValue(a, 1); }},
    {"In2()", [](const Args& a) { return inValue(a, 2); }},
    {"In3()", [](const Args& a) { return inValue(a, 3); }},
    {"In4()", [](const Args& a) { return inValue(a, 4); }},
    {"In5()", [](const Args& a) { return inValue(a, 5); }},
    {"In6()", [](const Args& a) { return inValue(a, 6); }},
    {"In7()", [](const Args& a) { return inValue(a, 7); }},
    {"In8()", [](const Args& a) { return inValue(a, 8); }},
    {"In9()", [](const Args& a) { return inValue(a, 9); }},
    {"In10()", [](const Args& a) { return inValue(a, 10); }},
    {"In11()", [](const Args& a) { return inValue(a, 11); }},
    {"In12()", [](const Args& a) { return inValue(a, 12); }},
    {"In13()", [](const Args& a) { return inValue(a, 13); }},
    {"In14()", [](const Args& a) { return inValue(a, 14); }},
    {"In15()", [](const Args& a) { return inValue(a, 15); }},
    {"In16()", [](const Args& a) { return inValue(a, 16); }},
};

const Definition kFlow[] = {
    {"Ex(1)", [](const Args& a) { return Vocabulary::runFormula(rt(a), a[1]); }},
    {"Switch(s,t,f=0)",
     [](const Args& a) {
         const double f = a[1] != 0 ? a[2] : a[3];
         return byte127(f) == 0 ? 0.0 : Vocabulary::runFormula(rt(a), f);
     }},
    {"Case()",
     [](const Args& a) {
         const int64_t i = whole(a[1]);
         if (i <= 1 || i > a.count) return 0.0;
         return Vocabulary::runFormula(rt(a), a[static_cast<int>(i)]);
     }},
    {"List()",
     [](const Args& a) {
         st(a).ix.push_back(0);
         runList(a, 1);
         st(a).ix.pop_back();
         return 0.0;
     }},
    {"Loop()",
     [](const Args& a) {
         if (a.count < 1) return 0.0;
         const int64_t top = whole(a[1]);
         st(a).jx.push_back(0);
         st(a).ix.push_back(0);
         for (int64_t j = 0; j <= top; ++j) {
             if (!a.calc.spend(1)) break;
             st(a).jx.back() = static_cast<int>(j);
             if (!runList(a, 2)) break;
         }
         st(a).ix.pop_back();
         st(a).jx.pop_back();
         return 0.0;
     }},
    {"Ix()", [](const Args& a) { return st(a).ix.empty() ? 0.0 : st(a).ix.back(); }},
    {"Jx()", [](const Args& a) { return st(a).jx.empty() ? 0.0 : st(a).jx.back(); }},
    {"fnEval()", [](const Args& a) { return a.count > 0 ? a[a.count] : 0.0; }},
    {"Edge(x,y,w,h,x2,y2,x1=0,y1=0)",
     [](const Args& a) {
         double r = 0;
         if (a[1] < a[7]) r += 2;
         if (a[1] + a[3] > a[5]) r += 1;
         if (a[2] < a[8]) r += 8;
         if (a[2] + a[4] > a[6]) r += 4;
         return r;
     }},
};

const Definition kTiming[] = {
    {"TSet(2)",
     [](const Args& a) {
         const int u = uid(a);
         const int code = cut(a[1], 0, 127);
         const double ticks = periodOf(code);
         st(a).timeCode[static_cast<size_t>(u)] = static_cast<uint8_t>(code);
         st(a).tailTicks[static_cast<size_t>(u)] =
             static_cast<uint8_t>(cut(std::round(ticks * (1.0 - a[2] / 100.0)), 0, 255));
         return a[1];
     }},
    {"Clk()",
     [](const Args& a) {
         const size_t u = static_cast<size_t>(uid(a));
         const int c = rt(a).stores().durationCounter(st(a).timeCode[u]);
         return (c == 0 || c > st(a).tailTicks[u]) ? 1.0 : 0.0;
     }},
    {"Tick(2)",
     [](const Args& a) {
         FormulaRuntime& r = rt(a);
         const size_t u = static_cast<size_t>(uid(a));
         auto& s = st(a);
         const int c = r.stores().durationCounter(s.timeCode[u]);
         if (c == 0) {
             if (!s.onFired[u]) {
                 s.onFired[u] = 1;
                 s.gateState[u] = 127;
                 Vocabulary::runFormula(r, a[1]);
             }
         } else {
             s.onFired[u] = 0;
         }
         if (c != 0 && c <= s.tailTicks[u]) {
             if (!s.offFired[u]) {
                 s.offFired[u] = 1;
                 s.gateState[u] = 0;
                 Vocabulary::runFormula(r, a[2]);
             }
         } else {
             s.offFired[u] = 0;
         }
         return static_cast<double>(s.gateState[u]);
     }},
    {"AutoStart(1)",
     [](const Args& a) {
         rt(a).autoStart = a[1] != 0;
         return a[1];
     }},
    {"MIDITick()", [](const Args& a) { return static_cast<double>(rt(a).stores().midiClockTicks()); }},
    {"AClock(1)",
     [](const Args& a) { return inRange(a[1], 0, 9) && rt(a).aclockState(cut(a[1], 0, 9)) ? 1.0 : 0.0; }},
    {"SetAClock(2)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 9)) return 0.0;
         const int n = cut(a[1], 0, 9);
         const int ms = cut(a[2], 0, 1 << 30);
         if (ms <= 0) Vocabulary::aclocks(rt(a))[static_cast<size_t>(n)] = false;
         rt(a).stores().setFormulaTimer(0, n, ms);
         return static_cast<double>(ms);
     }},
    {"Timer(1)",
     [](const Args& a) { return inRange(a[1], 0, 19) && rt(a).timerState(cut(a[1], 0, 19)) ? 1.0 : 0.0; }},
    {"SetTimer(2)",
     [](const Args& a) {
         if (!inRange(a[1], 0, 19)) return 0.0;
         const int n = cut(a[1], 0, 19);
         const int ms = cut(a[2], 0, 1 << 30);  // the timer service takes any period at once
         if (ms <= 0) Vocabulary::timers(rt(a))[static_cast<size_t>(n)] = false;
         rt(a).stores().setFormulaTimer(1, n, ms);
         return static_cast<double>(ms);
     }},
    {"Rising(2)",
     [](const Args& a) {
         if (!inRange(a[2], 0, 127)) return 0.0;
         uint8_t& high = st(a).risingHigh[static_cast<size_t>(cut(a[2], 0, 127))];
         const bool now = a[1] > 0;
         const bool fire = now && !high;
         high = now;
         return fire ? 1.0 : 0.0;
     }},
    {"Falling(2)",
     [](const Args& a) {
         if (!inRange(a[2], 0, 127)) return 0.0;
         uint8_t& high = st(a).fallingHigh[static_cast<size_t>(cut(a[2], 0, 127))];
         const bool now = a[1] > 0;
         const bool fire = !now && high;
         high = now;
         return fire ? 1.0 : 0.0;
     }},
    {"SetAbsClkA(1)",
     [](const Args& a) {
         rt(a).stores().setAbsClock(0, cut(a[1], 0, 32767));
         return a[1];
     }},
    {"SetAbsClkB(1)",
     [](const Args& a) {
         rt(a).stores().setAbsClock(1, cut(a[1], 0, 32767));
         return a[1];
     }},
    {"RunStop(1)",
     [](const Args& a) {
         rt(a).stores().setRun(a[1] != 0);
         return a[1] != 0 ? 1.0 : 0.0;
     }},
    {"CPS(1)", [](const Args& a) { return static_cast<double>(rt(a).stores().busValue(143 + cut(a[1], 0, 15))); }},
};

const char* const kStarred[] = {"Prev", "Me", "UID", "mID", "InC", "In1", "In2", "In3", "In4", "In5", "In6",
                                "In7", "In8", "In9", "In10", "In11", "In12", "In13", "In14", "In15", "In16",
                                "Ix", "Jx", "Clk"};

}  // namespace

void Vocabulary::mailboxFlowAndTiming(FormulaRuntime& r) {
    define(r, kMailbox, std::size(kMailbox));
    define(r, kFlow, std::size(kFlow));
    define(r, kTiming, std::size(kTiming));
    for (const char* name : kStarred) r.calc().alias(name, std::string(name) + "()");
    r.calc().bindByte("InC", &r.EvalInC);
    for (int i = 1; i <= 16; ++i) r.calc().bindByte("In" + std::to_string(i), &r.EvalIn[static_cast<size_t>(i)]);
    r.calc().bindByte("Me", &r.EvalFormula);
    r.calc().alias("MidiTick", "MIDITick()");
}

}  // namespace quillmer
