// Unit LocaleSet: the dialog "Localization setting", in which the user edits the list of language
// modules (a language's name and the file of its module, a row each) and the directory they are
// in. The dialog edits only what it is given; the manager reads the rows back when it closes,
// whatever way it was closed (host/ExpLang.cpp).
#pragma once

#include <QDialog>

#include <string>
#include <utility>
#include <vector>

class QAction;
class QTableWidget;

namespace zelvane {

class TLocaleForm : public QDialog {
public:
    explicit TLocaleForm(QWidget* owner = nullptr);

    using TModuleRows = std::vector<std::pair<std::string, std::string>>;
    // Fills the grid, a row per module; an empty list leaves one empty row.
    void SetModules(const TModuleRows& rows);
    // The rows whose name and file are both there (blanks around them dropped).
    TModuleRows Modules() const;

    // The directory of the modules, without a trailing delimiter.
    std::string WorkDir;

    QTableWidget* LocaleGrid() const { return grid_; }
    // The commands: close, add a row, delete the current row, choose the directory.
    void acAddExecute();
    void acDeleteExecute();
    void acSetDirExecute();

private:
    std::string Cell(int row, int column) const;
    void DeleteRecord(int row);
    QAction* AddCommand(const char* name, const char* hint, const char* keys);

    QTableWidget* grid_;
};

} // namespace zelvane
