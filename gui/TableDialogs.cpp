#include "gui/TableDialogs.h"

#include <memory>

#include "engine/Engine.h"
#include "gui/FillDialog.h"
#include "gui/PageTableEditor.h"
#include "modules/sequencers/FillTarget.h"
#include "modules/sequencers/MatrixTypes.h"
#include "modules/sequencers/Pages.h"

namespace quillmer::gui {

FillDialog* openFillDialog(Engine& engine, UserDialogs& dialogs, ModuleFinder find, const QString& name, QWidget* parent) {
    FillState& state = fillState();
    bool* pageFlag = nullptr;  // cleared on closing even if the page module went meanwhile
    static const bool keysLoaded = [&state] {
        loadHarmonicKeys(state.hsort);
        return true;
    }();
    (void)keysLoaded;
    {
        auto held = engine.lock();
        auto* target = dynamic_cast<FillTarget*>(find());
        if (!target) return nullptr;
        Row values{};
        const int n = std::min(target->fillStages(), kRowLength);
        target->copyToFill(std::span<uint8_t>(values.data(), static_cast<size_t>(n)));
        state.open(std::span<const uint8_t>(values.data(), static_cast<size_t>(n)), n - 1, target->fillScale());
        target->fillOpened(true);
        if (auto* pages = dynamic_cast<PageSequencer*>(target)) pageFlag = &pages->fillOpenFlag();
    }
    auto send = [&engine, find, &state] {
        auto held = engine.lock();
        if (auto* target = dynamic_cast<FillTarget*>(find())) {
            target->UpdateSeq(state.hold, state.knobs.scale);
            engine.MarkPatchChanged(true);
        }
    };
    auto* dialog = new FillDialog(state, send, dialogs, QStringLiteral("Fill: ") + name, parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(dialog, &QDialog::finished, dialog, [&engine, find, pageFlag] {
        auto held = engine.lock();
        if (auto* target = dynamic_cast<FillTarget*>(find())) target->fillOpened(false);
        if (pageFlag) *pageFlag = false;
    });
    dialog->open();
    return dialog;
}

namespace {
// A matrix's pages in the editor: row 0 is the live grid, named "AutoUpdate" (or the rule).
PageTableEditor* openMatrixPages(Engine& engine, UserDialogs& dialogs, ModuleFinder find, MatrixSequencer& matrix,
                                 QWidget* parent) {
    auto table = std::make_shared<PageTable>(matrix.size().cells());
    for (int r = 0; r < PageTable::kRows; ++r) {
        const std::vector<uint8_t> row = matrix.pageAsTableRow(r);
        std::copy(row.begin(), row.end(), table->row(r).begin());
        table->setName(r, matrix.pageName(r));
    }
    const std::vector<uint8_t> live = matrix.liveAsTableRow();
    std::copy(live.begin(), live.end(), table->row(0).begin());
    table->setName(0, matrix.liveRowName());
    auto* editor = new PageTableEditor(*table, 0, dialogs, parent);
    editor->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(editor, &QDialog::finished, editor, [&engine, find, table] {
        auto held = engine.lock();
        auto* m = dynamic_cast<MatrixSequencer*>(find());
        if (!m) return;
        for (int r = 0; r < PageTable::kRows; ++r) {
            m->setPageFromTableRow(r, std::span<const uint8_t>(table->row(r).data(), static_cast<size_t>(table->length())));
            m->setPageName(r, table->name(r));
        }
        m->tableClosed();
        engine.MarkPatchChanged(true);
    });
    editor->open();
    return editor;
}
}  // namespace

PageTableEditor* openPageTable(Engine& engine, UserDialogs& dialogs, ModuleFinder find, QWidget* parent) {
    auto table = std::make_shared<PageTable>();
    int current = 0;
    {
        auto held = engine.lock();
        if (auto* matrix = dynamic_cast<MatrixSequencer*>(find())) return openMatrixPages(engine, dialogs, find, *matrix, parent);
        auto* pages = dynamic_cast<PageSequencer*>(find());
        if (!pages) return nullptr;
        *table = PageTable(pages->stageCount());
        for (int r = 0; r < PageTable::kRows; ++r) {
            const auto row = pages->pageRow(r);
            std::copy(row.begin(), row.end(), table->row(r).begin());
            table->setName(r, pages->pageName(r));
        }
        current = pages->CurrentPage;
    }
    auto* editor = new PageTableEditor(*table, current, dialogs, parent);
    editor->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(editor, &QDialog::finished, editor, [&engine, find, table] {
        auto held = engine.lock();
        auto* pages = dynamic_cast<PageSequencer*>(find());
        if (!pages) return;
        for (int r = 0; r < PageTable::kRows; ++r) {
            pages->setPageRow(r, std::span<const uint8_t>(table->row(r).data(), static_cast<size_t>(table->length())));
            pages->setPageName(r, table->name(r));
        }
        pages->tableChanged();
        engine.MarkPatchChanged(true);
    });
    editor->open();
    return editor;
}

}  // namespace quillmer::gui
