#include "modules/BuiltTypes.h"

#include "modules/generators/Fractals.h"
#include "modules/generators/Randoms.h"
#include "modules/formulas/FormulaModules.h"
#include "modules/formulas/SliderBank.h"
#include "modules/midi/ChannelOutputs.h"
#include "modules/midi/ControllerOutput.h"
#include "modules/midi/Links.h"
#include "modules/midi/SysExOutputs.h"
#include "modules/midi/MidiFilePlayers.h"
#include "modules/midi/MidiInputs.h"
#include "modules/midi/NoteOutputs.h"
#include "modules/midi/NoteValues.h"
#include "modules/panels/Ball.h"
#include "modules/panels/Chain.h"
#include "modules/panels/CtrlOut32.h"
#include "modules/panels/InfoBoxes.h"
#include "modules/panels/Meter.h"
#include "modules/panels/MousePad.h"
#include "modules/panels/Picture.h"
#include "modules/panels/ValueControls.h"
#include "modules/processors/Arithmetic.h"
#include "modules/processors/Bitwise.h"
#include "modules/processors/Events.h"
#include "modules/processors/Memory.h"
#include "modules/processors/Scaling.h"
#include "modules/processors/Selection.h"
#include "modules/processors/Sums.h"
#include "modules/sequencers/BioSequencer.h"
#include "modules/processors/TableModules.h"
#include "modules/sequencers/Clocks.h"
#include "modules/sequencers/Gates.h"
#include "modules/sequencers/Knobs.h"
#include "modules/sequencers/MatrixTypes.h"
#include "modules/sequencers/Pages.h"
#include "modules/sequencers/Picks.h"
#include "modules/sequencers/Rhythm.h"
#include "modules/sequencers/Runs.h"
#include "modules/sequencers/Sfile.h"
#include "modules/sequencers/Slides.h"
#include "modules/sequencers/Steps.h"
#include "modules/sequencers/Switches.h"

namespace quillmer {

void registerBuiltTypes(ModuleRegistry& registry) {
    registry.add<Div>("Div");
    registry.add<UCalc0>("UCalc0");
    registry.add<UCalc1>("UCalc1");
    registry.add<UCalc2>("UCalc2");
    registry.add<UCalc3>("UCalc3");
    registry.add<UCalc4>("UCalc4");
    registry.add<UCalc5>("UCalc5");
    registry.add<UCalc6>("UCalc6");
    registry.add<UCalc7>("UCalc7");
    registry.add<UCalcXC>("UCalcXC");
    registry.add<UCalcXV>("UCalcXV");
    registry.add<UFSldr>("UFSldr");
    registry.add<Qscale>("Qscale");
    registry.add<Tablx>("Tabla");
    registry.add<TFit>("TFit");
    registry.add<TWrite>("TWrite");
    registry.add<ToneTbl>("ToneTbl");
    registry.add<TNames>("TNames");
    registry.add<Chain>("Chain");
    registry.add<MIDITone>("MIDITone");
    registry.add<MIDIVoice>("MIDIVoice");
    registry.add<MIDIKey>("MIDIKey");
    registry.add<MIDIChan>("MIDIChan");
    registry.add<MIDIPoly>("MIDIPoly");
    registry.add<MIDIPBend>("MIDIPBend");
    registry.add<Clock>("Clock");
    registry.add<Free>("Free");
    registry.add<Sync>("Sync");
    registry.add<Counter>("Counter");
    registry.add<Pulse>("Pulse");
    registry.add<GHold>("GHold");
    registry.add<Kicker>("Kicker");
    registry.add<Tempox>("Tempox");
    registry.add<Stepper>("Stepper");
    registry.add<Step2>("Step2");
    registry.add<Step4>("Step4");
    registry.add<Step8>("Step8");
    registry.add<Step12>("Step12");
    registry.add<Step16>("Step16");
    registry.add<Step24>("Step24");
    registry.add<Step32>("Step32");
    registry.add<Slide4>("Slide4");
    registry.add<Slide8>("Slide8");
    registry.add<Slide12>("Slide12");
    registry.add<Slide16>("Slide16");
    registry.add<Slide24>("Slide24");
    registry.add<Slide32>("Slide32");
    registry.add<Slide48>("Slide48");
    registry.add<Slide64>("Slide64");
    registry.add<Slide128>("Slide128");
    registry.add<Run8>("Run8");
    registry.add<Run12>("Run12");
    registry.add<Run16>("Run16");
    registry.add<Run24>("Run24");
    registry.add<Run32>("Run32");
    registry.add<Run48>("Run48");
    registry.add<Run64>("Run64");
    registry.add<Run128>("Run128");
    registry.add<Page08>("Page08");
    registry.add<Page12>("Page12");
    registry.add<Page16>("Page16");
    registry.add<Page24>("Page24");
    registry.add<Page32>("Page32");
    registry.add<Page64>("Page64");
    registry.add<Page128>("Page128");
    registry.add<Notes>("Notes");
    registry.add<XNote>("XNote");
    registry.add<Arpeg>("Arpeg");
    registry.add<Pitch>("Pitch");
    registry.add<Add>("Add");
    registry.add<Add2>("Add2");
    registry.add<AddDiv>("AddDiv");
    registry.add<Minus>("Minus");
    registry.add<Carry>("Carry");
    registry.add<Mult>("Mult");
    registry.add<MulAdd>("MulAdd");
    registry.add<MulDiv>("MulDiv");
    registry.add<Modu>("Modu");
    registry.add<Percent>("Percent");
    registry.add<Scaler>("Scaler");
    registry.add<Level>("Level");
    registry.add<Octave>("Octave");
    registry.add<Bounds>("Bounds");
    registry.add<Mixer>("Mixer");
    registry.add<Unity>("Unity");
    registry.add<Invert>("Invert");
    registry.add<Mask>("Mask");
    registry.add<Shift>("Shift");
    registry.add<Bits>("Bits");
    registry.add<Diff>("Diff");
    registry.add<LogiAND>("LogiAND");
    registry.add<LogiOR>("LogiOR");
    registry.add<LogiXOR>("LogiXOR");
    registry.add<LogiEQ0>("LogiEQ0");
    registry.add<LogiNE0>("LogiNE0");
    registry.add<Test>("Test");
    registry.add<Latest>("Latest");
    registry.add<Tally>("Tally");
    registry.add<HiLo>("HiLo");
    registry.add<Accum>("Accum");
    registry.add<Relay2>("Relay2");
    registry.add<Selct>("Selct");
    registry.add<SelOut>("SelOut");
    registry.add<Flip>("Flip");
    registry.add<Sample>("Sample");
    registry.add<Delay>("Delay");
    registry.add<DLTap>("DLTap");
    registry.add<Slew>("Slew");
    registry.add<T127>("T127");
    registry.add<MIDICCIn>("MIDICCIn");
    registry.add<MIDICIn>("MIDICIn");
    registry.add<MIDIPPIn>("MIDIPPIn");
    registry.add<MIDIPIn>("MIDIPIn");
    registry.add<MIDIPCIn>("MIDIPCIn");
    registry.add<MIDIPBIn>("MIDIPBIn");
    registry.add<MIDIKeyNum>("MIDIKeyNum");
    registry.add<MIDIKeyVel>("MIDIKeyVel");
    registry.add<Keybd>("Keybd");
    registry.add<MIDIFile>("MIDIFile");
    registry.add<MIDIFileSlave>("MIDIFileSlave");
    registry.add<Value>("Value");
    registry.add<Number>("Number");
    registry.add<Bar>("Bar");
    registry.add<VBar>("VBar");
    registry.add<Button>("Button");
    registry.add<Strobe>("Strobe");
    registry.add<Meter>("Meter");
    registry.add<CtrlOut32>("CtrlOut32");
    registry.add<Ball>("Ball");
    registry.add<BallCtrl>("BallCtrl");
    registry.add<Mousexy>("Mousexy");
    registry.add<MouseOut>("MouseOut");
    registry.add<Info>("Info");
    registry.add<InfoPic>("InfoPic");
    registry.add<InfoButton>("InfoButton");
    registry.add<InfoButPic>("InfoButPic");
    registry.add<Image>("Image");
    registry.add<ImgOut>("ImgOut");
    registry.add<MIDICtrl>("MIDICtrl");
    registry.add<SysEx>("SysEx");
    registry.add<SysExFile>("SysExFile");
    registry.add<Sfile>("Sfile");
    registry.add<IPLink>("IPLink");
    registry.add<Chaos>("Chaos");
    registry.add<Fractal>("Fractal");
    registry.add<FracOut>("FracOut");
    registry.add<Rand>("Rand");
    registry.add<Rand3>("Rand3");
    registry.add<RanPat>("RanPat");
    registry.add<URand>("URand");
    registry.add<URanOut>("URanOut");
    registry.add<Prob>("Prob");
    registry.add<NumGen>("NumGen");
    registry.add<FunGen>("FunGen");
    registry.add<Corupt>("Corupt");
    registry.add<BioSeq>("BioSeq");
    registry.add<BioFlag>("BioFlag");
    registerMatrixTypes(registry);
    registry.add<Gates>("Gates");
    registry.add<Gatex08>("Gatex08");
    registry.add<Gatex16>("Gatex16");
    registry.add<Gatex32>("Gatex32");
    registry.add<Rhythm>("Rhythm");
    registry.add<Pick04>("Pick04");
    registry.add<Pick08>("Pick08");
    registry.add<Pick16>("Pick16");
    registry.add<Pick24>("Pick24");
    registry.add<Radio>("Radio");
    registry.add<Switch2>("Switch2");
    registry.add<Switch4>("Switch4");
    registry.add<Switch8>("Switch8");
    registry.add<Switch16>("Switch16");
    registry.add<Knob2>("Knob2");
    registry.add<Knob4>("Knob4");
    registry.add<Knob8>("Knob8");
    registry.add<Knob12>("Knob12");
    registry.add<Knob16>("Knob16");
    registry.add<Knob24>("Knob24");
}

const ModuleRegistry& builtTypes() {
    static const ModuleRegistry registry = [] {
        ModuleRegistry r;
        registerBuiltTypes(r);
        return r;
    }();
    return registry;
}

}  // namespace quillmer
