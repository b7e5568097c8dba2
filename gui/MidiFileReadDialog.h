#pragma once
// frmMIDIFileRead: a MIDI file's tracks with their names and counts, the channels of the
// chosen track, the message classes of the chosen channel; the chosen class is saved as a
// .mfx list at 24 steps per quarter with the file's tempo.

#include <QDialog>
#include <array>
#include <string>

#include "platform/MidiFileTranslation.h"

class QLabel;
class QListWidget;
class QPushButton;

namespace quillmer::gui {

class UserDialogs;

class MidiFileReadDialog : public QDialog {
    Q_OBJECT
public:
    MidiFileReadDialog(UserDialogs& dialogs, QWidget* parent);

    // btnGetName: asks for a file and reads it.
    void getName();
    // Reads a file; false (and a message box) when it can't be read.
    bool openFile(const QString& path);
    void chooseTrack(int track);
    void chooseChannel(int channel);
    void chooseClass(int cls);
    // btnSave: asks for a name and writes the list.
    void save();

    const MidiFileTranslation& translation() const { return translation_; }
    const MfxList& list() const { return list_; }

private:
    void clearChannels();
    void clearClasses();

    UserDialogs& dialogs_;
    MidiFileTranslation translation_;
    QString path_;
    int track_ = -1;
    int channel_ = -1;
    MfxList list_;
    QLabel* file_;
    QLabel* bpm_;
    QLabel* notes_;
    QListWidget* tracks_;
    QLabel* trackName_;
    std::array<QPushButton*, 16> channels_{};
    QListWidget* classes_;
    QLabel* events_;
    QPushButton* save_;
};

// Shows the dialog over `parent`; it deletes itself when closed.
void showMidiFileReadDialog(UserDialogs& dialogs, QWidget* parent);

}  // namespace quillmer::gui
