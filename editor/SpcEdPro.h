// Unit SpcEdPro: the extended settings editor. TSpcEditorPro gives the richer property types rows
// of their own: spin numbers, colours, dates and times, fonts, pictures, string lists (checked,
// chosen or plain) and hot keys. Whole objects such as string lists, fonts and pictures thus
// become rows instead of tree nodes. It works through the base editor's extension points and
// marks its rows with its own descendant number, so that the base leaves them alone.
#pragma once

#include "editor/SpcEditor.h"

#include <QPointer>

class QMenu;

namespace zelvane {

// The extended kinds, numbered on their own.
enum TProControlKind : uint8_t {
    pkNone = 0,
    pkSpinInt = 1,
    pkCheckStrings = 2,
    pkSelectStrings = 3,
    pkColor = 4,
    pkDate = 5,
    pkTime = 6,
    pkFont = 7,
    pkPicture = 8,
    pkGraphic = 9,
    pkStrings = 10,
    pkShortCut = 11,
    pkShortCutString = 12,
};

class TSpcEditorPro : public TSpcEditor {
    RTL_CLASS(TSpcEditorPro, TSpcEditor)
public:
    explicit TSpcEditorPro(rtl::TComponent* owner = nullptr);
    ~TSpcEditorPro() override;

    // Every integer property gets a spin edit.
    bool SpinOveruse = false;

    void Init(TInitData* initData, void* appHandle) override;
    // The extended kind of a property, pkNone for those the base editor handles.
    TProControlKind ProKindOf(rtl::PPropInfo propInfo) const;
    int32_t DescendantID() const { return descendantID_; }
    QMenu* StringsMenu() const { return stringsMenu_.get(); }
    QMenu* PictureMenu() const { return picMenu_.get(); }

protected:
    bool CanProcessProperty(rtl::TPersistent* instance, rtl::PPropInfo propInfo) override;
    void DoBeforeCreateControl(rtl::TPersistent* instance, rtl::PPropInfo propInfo,
                               QWidget* parent, TNewControlData& data, bool& handled) override;
    void SetControlData(TControlInfo* info) override;
    void GetControlData(TControlInfo* info, bool& aborted) override;
    virtual std::unique_ptr<QMenu> CreateStringsEditorMenu();
    virtual std::unique_ptr<QMenu> CreatePicEditorMenu();

private:
    QWidget* MakeProControl(TProControlKind kind, QWidget* parent);
    void AttachMenu(QWidget* control, QMenu* menu, void (TSpcEditorPro::*popup)());
    TControlInfo* MenuRow(QMenu* menu) const;
    void StringsMenuPopup();
    void StringsMenuItemClick(int tag);
    void PicMenuPopup();
    void PicMenuItemClick(int tag);
    void MemoDblClick(QWidget* memo);

    int32_t descendantID_;
    void* userData_ = nullptr;
    std::unique_ptr<QMenu> stringsMenu_;
    std::unique_ptr<QMenu> picMenu_;
    QPointer<QWidget> menuControl_;
};

} // namespace zelvane
