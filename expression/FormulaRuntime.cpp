#include "expression/FormulaRuntime.h"

#include <string>

#include "expression/RuntimeStores.h"

#include <atomic>

namespace quillmer {

namespace {
std::atomic<uint64_t> generations{0};

// The vocabulary whose value depends on its arguments and the context alone, and whose mail
// comes out the same when it runs again.
constexpr const char* kPureVocabulary[] = {"OUT", "LED", "nLED", "ClkLED", "GOTO", "ToolTip", "TxtLabel", "NumLabel",
                                           "Me", "UID", "mID", "InC", "fnEval", "Edge", "RBIT", "WBIT", "TBIT"};
}  // namespace

FormulaRuntime::FormulaRuntime(FormulaStores* stores, std::string dataFolder)
    : stores_(stores != nullptr ? stores : &ownStores_),
      dataFolder_(std::move(dataFolder)),
      moduleUid_(kEvalModuleIds, 0),
      state_(std::make_unique<Stores>()) {
    clearMailboxes();
}

void FormulaRuntime::clearMailboxes() {
    mailTexts_.assign(kEvalModuleIds, MailText{});
    mailboxes_.assign(kEvalModuleIds, Mailbox{});
    for (size_t i = 0; i < mailboxes_.size(); ++i) mailboxes_[i].text = &mailTexts_[i];
}

FormulaRuntime::~FormulaRuntime() = default;

void FormulaRuntime::start() {
    // 1. The arrays of the data model, cleared.
    state_ = std::make_unique<Stores>();
    clearMailboxes();
    moduleUid_.assign(kEvalModuleIds, 0);
    uidCount_ = 0;
    infoBoxes_ = {};
    EvalModuleId = 0;
    EvalFormula = 0;
    EvalInC = 0;
    EvalIn = {};
    // 2. The engine's capacities: formulas, functions, variables, aliases, texts of a formula.
    calc_.reset("8000,802,800,1200,800");
    // 3. No formula file stays open (the new stores hold none).
    state_->closeFiles();
    // 4. Absolute clocks and timers off.
    aclock_ = {};
    timers_ = {};
    for (int n = 0; n < 10; ++n) stores_->setFormulaTimer(0, n, 0);
    for (int n = 0; n < 20; ++n) stores_->setFormulaTimer(1, n, 0);
    // 5.
    calc_.alias("RAN", "RND()");
    // 6. The LET family, each naming a variable through the pre-parse.
    Vocabulary::letFamily(*this);
    // 7. Warm the variable table: 601 variables, then 0..599 released, so that the letters
    // take the handles 599, 598, ... (the last released is handed out first).
    for (int i = 0; i <= 600; ++i) calc_.defineVariable("xigx" + std::to_string(i) + "=0");
    for (int h = 0; h <= 599; ++h) calc_.releaseVariable(h);
    // 8. The letters and the constants.
    for (int i = 0; i < 26; ++i)
        letterHandles_[static_cast<size_t>(i)] = calc_.defineVariable(std::string(1, static_cast<char>('A' + i)) + "=0");
    runHandle_ = calc_.defineVariable("Run=0");
    startHandle_ = calc_.defineVariable("Start=0");
    calc_.defineVariable("Pi=3.14159265358979");
    calc_.defineVariable("_e=2.718281828459");
    calc_.defineVariable("Phi=1.61803398875");
    calc_.defineVariable("CRLF$=\r\n");
    calc_.defineVariable("Tab$=\t");
    // 9. The inline formulas, as stored: Frac's body leaves a parenthesis open, which a body
    // may (see Calc.h).
    calc_.defineFunction("LIM(n)=min(max(0,n),127)");
    calc_.defineFunction("Wrap(n)=int(n) mod 128");
    calc_.defineFunction("Frac(x)=abs(abs(x)-int(abs(x))");
    calc_.defineFunction("pBlue(color)=(color \\ 65536) Mod 256");
    calc_.defineFunction("pGreen(color)=(color \\ 256) Mod 256");
    calc_.defineFunction("pRed(color)=color Mod 256");
    // 10. The vocabulary, in its order.
    defineVocabulary();
    autoStart = true;
    for (const char* name : kPureVocabulary) calc_.markPure(name);
    for (int i = 1; i <= 16; ++i) calc_.markPure("In" + std::to_string(i));
    // 11. The default formula in every entry.
    defaultHandle_ = calc_.parse(kDefaultFormula);
    for (FormulaEntry& e : formulas_) e = FormulaEntry{defaultHandle_, {}};
    // 12. The pixel functions, unless something defined them already.
    if (!calc_.isFunction("WPix")) Vocabulary::pixels(*this);
    calc_.clearError();
    generation_ = ++generations;
    started_ = true;
}

void FormulaRuntime::defineVocabulary() {
    Vocabulary::mailboxFlowAndTiming(*this);
    Vocabulary::storesAndBitMatrix(*this);
    Vocabulary::midiAndGrids(*this);
    Vocabulary::bits(*this);
    Vocabulary::textAndFiles(*this);
    Vocabulary::randomAndAngle(*this);
}

double FormulaRuntime::evaluate(uint16_t moduleId, int formula) {
    EvalModuleId = static_cast<uint16_t>(clampId(moduleId));
    EvalFormula = static_cast<uint8_t>(formula & 127);
    const expr::Handle h = formulas_[EvalFormula].handle;
    state_->ix.clear();
    state_->jx.clear();
    return calc_.evaluate(h);
}

int FormulaRuntime::setFormula(int n, std::string_view text, std::string_view doc) {
    const expr::Handle h = calc_.parse(text);
    if (h == 0) return calc_.error();
    FormulaEntry& e = formulas_[static_cast<size_t>(n & 127)];
    const expr::Handle old = e.handle;
    e.handle = h;
    e.doc = std::string(doc);
    e.pureAsOf = 0;
    generation_ = ++generations;
    bool shared = old == defaultHandle_;
    for (const FormulaEntry& other : formulas_) shared = shared || other.handle == old;
    if (!shared) calc_.release(old);
    return expr::kOk;
}

bool FormulaRuntime::isPure(int n) {
    FormulaEntry& e = formulas_[static_cast<size_t>(n & 127)];
    if (e.pureAsOf != calc_.definitions() + 1) {
        e.pure = calc_.isPure(e.handle);
        e.pureAsOf = calc_.definitions() + 1;
    }
    return e.pure;
}

int FormulaRuntime::uidOf(int moduleId) {
    uint8_t& uid = moduleUid_[static_cast<size_t>(clampId(moduleId))];
    if (uid == 0) {
        ++uidCount_;
        if (uidCount_ >= kUidCount) {
            uidCount_ = kUidCount - 1;
            stores_->message(kUidExhausted);
        }
        uid = static_cast<uint8_t>(uidCount_);
    }
    return uid;
}

uint32_t FormulaRuntime::matrixRow(int uid, int row) const {
    if (uid < 1 || uid >= kUidCount || row < 0 || row >= 32) return 0;
    return state_->lm[static_cast<size_t>(uid)][static_cast<size_t>(row)];
}

const uint32_t* FormulaRuntime::matrixRows(int uid) const {
    if (uid < 1 || uid >= kUidCount) return nullptr;
    return state_->lm[static_cast<size_t>(uid)].data();
}

void FormulaRuntime::setMatrixRow(int uid, int row, uint32_t word) {
    if (uid < 1 || uid >= kUidCount || row < 0 || row >= 32) return;
    state_->lm[static_cast<size_t>(uid)][static_cast<size_t>(row)] = word;
}

void FormulaRuntime::setRunVariables(bool run, bool start) {
    calc_.setVariable(runHandle_, run ? 1 : 0);
    calc_.setVariable(startHandle_, start ? 1 : 0);
}

void FormulaRuntime::timerFired(int kind, int n) {
    if (kind == 0 && n >= 0 && n < 10) aclock_[static_cast<size_t>(n)] = !aclock_[static_cast<size_t>(n)];
    if (kind == 1 && n >= 0 && n < 20) timers_[static_cast<size_t>(n)] = !timers_[static_cast<size_t>(n)];
}

const Picture* FormulaRuntime::picture(int mid) const {
    const Picture& p = state_->pictures[static_cast<size_t>(mid & 127)];
    return p.pixels.empty() ? nullptr : &p;
}

void Vocabulary::define(FormulaRuntime& r, const fx::Definition* defs, size_t count) {
    for (size_t i = 0; i < count; ++i) r.calc_.defineFunction(defs[i].prototype, defs[i].fn, &r);
}

double Vocabulary::runFormula(FormulaRuntime& r, double n) {
    const uint8_t f = fx::byte127(n);
    const uint8_t saved = r.EvalFormula;
    r.EvalFormula = f;
    const double v = r.calc_.evaluate(r.formulas_[f].handle);
    r.EvalFormula = saved;
    return v;
}

std::string Vocabulary::variableToHandle(expr::Calc& calc, void*, std::string_view name) {
    std::string_view n = name;
    while (!n.empty() && n.front() == ' ') n.remove_prefix(1);
    while (!n.empty() && n.back() == ' ') n.remove_suffix(1);
    if (n.empty()) return "-1";
    if ((n.front() >= '0' && n.front() <= '9') || n.front() == '-') return std::string(n);  // a handle already
    int h = calc.variableHandle(n);
    if (h < 0) {
        std::string plain(n);
        if (plain.back() == '$') plain.pop_back();
        const int keepError = calc.error();
        const std::string keepData = calc.errorData();
        h = calc.defineVariable(plain + "=0");
        calc.clearError();
        if (keepError != expr::kOk) calc.fail(keepError, keepData);
    }
    return std::to_string(h);
}

}  // namespace quillmer
