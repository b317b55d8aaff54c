// The editor's tests: an editor shown without a modal loop, its rows found by property name, and
// the form closed without questions at the end.
#pragma once

#include "editor/SpcEditor.h"
#include "editor/SpcForm.h"
#include "tests/workbench_gui/Fixture.h"

#include <QtWidgets>

#include <algorithm>
#include <memory>

namespace edtest {

using namespace zelvane;
using wbtest::RunLoop;
using wbtest::WaitFor;
using wbtest::WhenModal;

template <class E> class EditorFixture : public ::testing::Test {
protected:
    void SetUp() override {
        editor = std::make_unique<E>();
        editor->FormOptions.Exclude(foModalShowing);
        editor->IniFileName = "/dev/null";
    }
    void TearDown() override {
        for (auto& w : wbtest::ModalWatches())
            delete w.data();
        wbtest::ModalWatches().clear();
        if (TSpcForm* form = editor->Form()) {
            editor->UndoChanges();
            form->close();
        }
        RunLoop(1);
        editor.reset();
    }
    // Waits for the first node to be selected, as the form does once it has shown.
    void WaitShown() {
        ASSERT_TRUE(WaitFor([&] { return Tree()->currentItem() != nullptr; }));
    }
    QTreeWidget* Tree() const { return editor->TreeView(); }
    TControlInfo* Row(const std::string& prop) const {
        for (const auto& info : editor->Controls())
            if (info->PropInfo->Name == prop) return info.get();
        return nullptr;
    }
    template <class W> W* Control(const std::string& prop) const {
        TControlInfo* info = Row(prop);
        return info ? qobject_cast<W*>(info->Control.data()) : nullptr;
    }
    // The node's rows in the order shown: column by column, top to bottom within a column (each
    // row's control is made in turn on its column's panel). The control list itself is ordered
    // by address.
    std::vector<TControlInfo*> ShownRows() const {
        std::vector<TControlInfo*> rows;
        for (const auto& info : editor->Controls())
            rows.push_back(info.get());
        auto place = [](const TControlInfo* info) {
            QWidget* w = info->Control.data();
            return std::pair{info->AreaIndex, w->parent()->children().indexOf(w)};
        };
        std::stable_sort(rows.begin(), rows.end(),
                         [&](auto* a, auto* b) { return place(a) < place(b); });
        return rows;
    }

    // The shown rows as "Name=value" with a space between, each value as its control shows it:
    // a check box as 0 or 1, a list as its items with "+" after a checked one, a date and time
    // in ISO form.
    std::string Rows() const {
        QStringList rows;
        for (const TControlInfo* info : ShownRows()) {
            QWidget* w = info->Control.data();
            QString value;
            if (auto* edit = qobject_cast<QLineEdit*>(w)) value = edit->text();
            if (auto* combo = qobject_cast<QComboBox*>(w)) value = combo->currentText();
            if (auto* check = qobject_cast<QCheckBox*>(w))
                value = QString::number(check->isChecked());
            if (auto* spin = qobject_cast<QSpinBox*>(w)) value = spin->text();
            if (auto* key = qobject_cast<QKeySequenceEdit*>(w))
                value = key->keySequence().toString();
            if (auto* time = qobject_cast<QDateTimeEdit*>(w))
                value = time->dateTime().toString(Qt::ISODate);
            if (auto* memo = qobject_cast<QPlainTextEdit*>(w)) value = memo->toPlainText();
            if (auto* list = qobject_cast<QListWidget*>(w)) {
                QStringList items;
                for (int i = 0; i < list->count(); ++i)
                    items << list->item(i)->text() + (list->item(i)->checkState() ? "+" : "");
                value = "[" + items.join(' ') + "]";
            }
            rows << QString::fromStdString(info->PropInfo->Name) + "=" + value;
        }
        return rows.join(' ').toStdString();
    }

    std::unique_ptr<E> editor;
};

} // namespace edtest
