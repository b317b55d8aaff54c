#include "locale/LocaleSet.h"

#include "foundation/Dialogs.h"
#include "rtl/SysUtils.h"
#include "toolsapi/QtBridge.h"

#include <QAction>
#include <QFileDialog>
#include <QHeaderView>
#include <QTableWidget>
#include <QToolBar>
#include <QVBoxLayout>

namespace zelvane {

using ToolsAPI::FromBytes;
using ToolsAPI::ToBytes;

namespace {

constexpr int GridRowHeight = 18;
constexpr int GridColWidth = 120;

} // namespace

TLocaleForm::TLocaleForm(QWidget* owner) : QDialog(owner) {
    setObjectName(QStringLiteral("LocaleForm"));
    setWindowTitle(QStringLiteral("Localization setting"));
    resize(250, 347);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto* tools = new QToolBar(this);
    layout->addWidget(tools);
    grid_ = new QTableWidget(0, 2, this);
    grid_->setObjectName(QStringLiteral("LocaleGrid"));
    grid_->setHorizontalHeaderLabels({QStringLiteral("Language"), QStringLiteral("Library")});
    grid_->verticalHeader()->hide();
    grid_->verticalHeader()->setDefaultSectionSize(GridRowHeight);
    grid_->horizontalHeader()->setDefaultSectionSize(GridColWidth);
    grid_->setSelectionMode(QAbstractItemView::SingleSelection);
    grid_->setEditTriggers(QAbstractItemView::AllEditTriggers);
    layout->addWidget(grid_);

    tools->addAction(AddCommand("acExit", "Exit", "Esc"));
    tools->addAction(AddCommand("acAdd", "Add language", "Ctrl+A"));
    tools->addAction(AddCommand("acDelete", "Delete language", "Ctrl+D"));
    tools->addAction(AddCommand("acSetDir", "Set work directory", "Ctrl+S"));
    connect(findChild<QAction*>(QStringLiteral("acExit")), &QAction::triggered, this,
            &QDialog::close);
    connect(findChild<QAction*>(QStringLiteral("acAdd")), &QAction::triggered, this,
            [this] { acAddExecute(); });
    connect(findChild<QAction*>(QStringLiteral("acDelete")), &QAction::triggered, this,
            [this] { acDeleteExecute(); });
    connect(findChild<QAction*>(QStringLiteral("acSetDir")), &QAction::triggered, this,
            [this] { acSetDirExecute(); });
}

QAction* TLocaleForm::AddCommand(const char* name, const char* hint, const char* keys) {
    auto* action = new QAction(QString::fromLatin1(hint), this);
    action->setObjectName(QString::fromLatin1(name));
    action->setToolTip(QString::fromLatin1(hint));
    action->setShortcut(QKeySequence(QString::fromLatin1(keys)));
    action->setShortcutContext(Qt::WindowShortcut);
    addAction(action);
    return action;
}

void TLocaleForm::SetModules(const TModuleRows& rows) {
    grid_->setRowCount(std::max<int>(1, int(rows.size())));
    for (int r = 0; r < int(rows.size()); ++r) {
        grid_->setItem(r, 0, new QTableWidgetItem(FromBytes(rows[size_t(r)].first)));
        grid_->setItem(r, 1, new QTableWidgetItem(FromBytes(rows[size_t(r)].second)));
    }
}

std::string TLocaleForm::Cell(int row, int column) const {
    QTableWidgetItem* item = grid_->item(row, column);
    return item ? rtl::Trim(ToBytes(item->text())) : std::string();
}

TLocaleForm::TModuleRows TLocaleForm::Modules() const {
    TModuleRows rows;
    for (int r = 0; r < grid_->rowCount(); ++r)
        if (!Cell(r, 0).empty() && !Cell(r, 1).empty()) rows.emplace_back(Cell(r, 0), Cell(r, 1));
    return rows;
}

void TLocaleForm::acAddExecute() {
    grid_->setRowCount(grid_->rowCount() + 1);
    grid_->setCurrentCell(grid_->rowCount() - 1, 0);
}

void TLocaleForm::acDeleteExecute() {
    int row = grid_->currentRow();
    if (row < 0 || (Cell(row, 0).empty() && Cell(row, 1).empty())) return;
    if (!QueryDialog("Delete %s?", {Cell(row, 0)})) return;
    DeleteRecord(row);
}

// The last row stays, emptied, so that the grid always has one to type into.
void TLocaleForm::DeleteRecord(int row) {
    delete grid_->takeItem(row, 0);
    delete grid_->takeItem(row, 1);
    if (grid_->rowCount() > 1) grid_->removeRow(row);
}

void TLocaleForm::acSetDirExecute() {
    QString start = rtl::DirectoryExists(WorkDir) ? FromBytes(WorkDir) : QString();
    QString dir = QFileDialog::getExistingDirectory(this, QStringLiteral("Select work directory"),
                                                    start);
    if (!dir.isEmpty()) WorkDir = rtl::ExcludeTrailingPathDelimiter(ToBytes(dir));
}

} // namespace zelvane
