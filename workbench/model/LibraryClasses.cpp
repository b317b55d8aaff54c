#include "workbench/model/LibraryClasses.h"

#include "workbench/model/ProjectFiles.h"

#include "rtl/SysUtils.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>

namespace workbench {

using ToolsAPI::TDesignComponent;
using ToolsAPI::TDesignProperty;
using ToolsAPI::TDesignValueKind;

namespace {

using K = TLibraryPropertyKind;
using List = std::vector<TLibraryProperty>;
using Names = std::vector<std::string>;

// ---------------------------------------------------------------------------------------------
// Making entries

TLibraryProperty Int(const char* name, const char* def = "0") {
    return {name, K::Integer, "Integer", def, {}, false};
}
TLibraryProperty Str(const char* name, const char* type = "string") {
    return {name, K::String, type, "''", {}, false};
}
TLibraryProperty Bool(const char* name, bool def) {
    return {name, K::Boolean, "Boolean", def ? "True" : "False", {}, false};
}
TLibraryProperty Enum(const char* name, const char* type, const char* def, Names values) {
    return {name, K::Ident, type, def, std::move(values), false};
}
TLibraryProperty SetOf(const char* name, const char* type, const char* def, Names values) {
    return {name, K::Set, type, def, std::move(values), false};
}
TLibraryProperty Obj(const char* name, const char* type) {
    return {name, K::Class, type, std::string("(") + type + ")", {}, false};
}
TLibraryProperty Ref(const char* name, const char* type) {
    return {name, K::Ident, type, "", {}, false};
}
TLibraryProperty Ev(const char* name, const char* type = "TNotifyEvent") {
    return {name, K::Event, type, "", {}, false};
}
// The same property with another default, as a class that publishes it anew gives it.
TLibraryProperty With(TLibraryProperty p, const char* def) {
    p.Default = def;
    return p;
}

List Join(std::initializer_list<List> parts) {
    List all;
    for (const List& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

// A class's own list from the groups it is made of. Where a property comes twice, the later
// entry (a class's own default) replaces the earlier; the names in drop are left out, for a
// class that does not publish all of a group. The library declares a class's published
// section with the properties in alphabetical order and the events after them; the list is
// kept in that order, which is also the order a form file writes them in.
List Published(const List& parts, const Names& drop = {}) {
    List props;
    for (const TLibraryProperty& p : parts) {
        if (std::any_of(drop.begin(), drop.end(),
                        [&](const std::string& d) { return rtl::SameText(d, p.Name); }))
            continue;
        auto same = std::find_if(props.begin(), props.end(), [&](const TLibraryProperty& q) {
            return rtl::SameText(q.Name, p.Name);
        });
        if (same != props.end())
            *same = p;
        else
            props.push_back(p);
    }
    std::stable_sort(props.begin(), props.end(), [](const auto& a, const auto& b) {
        bool ea = a.Kind == K::Event, eb = b.Kind == K::Event;
        if (ea != eb) return eb;
        return rtl::CompareText(a.Name, b.Name) < 0;
    });
    return props;
}

} // namespace

const std::vector<std::string>& LibraryColorNames() {
    static const std::vector<std::string> names = {"clBlack",
                                                   "clMaroon",
                                                   "clGreen",
                                                   "clOlive",
                                                   "clNavy",
                                                   "clPurple",
                                                   "clTeal",
                                                   "clGray",
                                                   "clSilver",
                                                   "clRed",
                                                   "clLime",
                                                   "clYellow",
                                                   "clBlue",
                                                   "clFuchsia",
                                                   "clAqua",
                                                   "clLtGray",
                                                   "clDkGray",
                                                   "clWhite",
                                                   "clMoneyGreen",
                                                   "clSkyBlue",
                                                   "clCream",
                                                   "clMedGray",
                                                   "clNone",
                                                   "clDefault",
                                                   "clScrollBar",
                                                   "clBackground",
                                                   "clActiveCaption",
                                                   "clInactiveCaption",
                                                   "clMenu",
                                                   "clWindow",
                                                   "clWindowFrame",
                                                   "clMenuText",
                                                   "clWindowText",
                                                   "clCaptionText",
                                                   "clActiveBorder",
                                                   "clInactiveBorder",
                                                   "clAppWorkSpace",
                                                   "clHighlight",
                                                   "clHighlightText",
                                                   "clBtnFace",
                                                   "clBtnShadow",
                                                   "clGrayText",
                                                   "clBtnText",
                                                   "clInactiveCaptionText",
                                                   "clBtnHighlight",
                                                   "cl3DDkShadow",
                                                   "cl3DLight",
                                                   "clInfoText",
                                                   "clInfoBk",
                                                   "clHotLight",
                                                   "clGradientActiveCaption",
                                                   "clGradientInactiveCaption",
                                                   "clMenuHighlight",
                                                   "clMenuBar"};
    return names;
}

namespace {

// ---------------------------------------------------------------------------------------------
// Types shared by many classes

const Names& CursorNames() {
    static const Names names = {"crDefault", "crNone",      "crArrow",   "crCross",    "crIBeam",
                                "crSize",    "crSizeNESW",  "crSizeNS",  "crSizeNWSE", "crSizeWE",
                                "crUpArrow", "crHourGlass", "crDrag",    "crNoDrop",   "crHSplit",
                                "crVSplit",  "crMultiDrag", "crSQLWait", "crNo",       "crAppStart",
                                "crHelp",    "crHandPoint", "crSizeAll"};
    return names;
}

TLibraryProperty Color(const char* name, const char* def) {
    TLibraryProperty p{name, K::Ident, "TColor", def, LibraryColorNames(), true};
    return p;
}
TLibraryProperty Cursor(const char* name, const char* def) {
    TLibraryProperty p{name, K::Ident, "TCursor", def, CursorNames(), true};
    return p;
}

struct TCommon {
    TLibraryProperty Action = Ref("Action", "TBasicAction");
    TLibraryProperty Align =
        Enum("Align", "TAlign", "alNone",
             {"alNone", "alTop", "alBottom", "alLeft", "alRight", "alClient", "alCustom"});
    TLibraryProperty Alignment = Enum("Alignment", "TAlignment", "taLeftJustify",
                                      {"taLeftJustify", "taRightJustify", "taCenter"});
    TLibraryProperty Anchors =
        SetOf("Anchors", "TAnchors", "[akLeft, akTop]", {"akLeft", "akTop", "akRight", "akBottom"});
    TLibraryProperty AutoSize = Bool("AutoSize", false);
    TLibraryProperty BevelKind =
        Enum("BevelKind", "TBevelKind", "bkNone", {"bkNone", "bkTile", "bkSoft", "bkFlat"});
    TLibraryProperty BiDiMode = Enum(
        "BiDiMode", "TBiDiMode", "bdLeftToRight",
        {"bdLeftToRight", "bdRightToLeft", "bdRightToLeftNoAlign", "bdRightToLeftReadingOnly"});
    TLibraryProperty BorderStyle =
        Enum("BorderStyle", "TBorderStyle", "bsSingle", {"bsNone", "bsSingle"});
    TLibraryProperty BorderWidth = Int("BorderWidth", "0");
    TLibraryProperty Caption = Str("Caption", "TCaption");
    TLibraryProperty CharCase =
        Enum("CharCase", "TEditCharCase", "ecNormal", {"ecNormal", "ecUpperCase", "ecLowerCase"});
    TLibraryProperty ColorBtnFace = Color("Color", "clBtnFace");
    TLibraryProperty ColorWindow = Color("Color", "clWindow");
    TLibraryProperty Constraints = Obj("Constraints", "TSizeConstraints");
    TLibraryProperty Ctl3D = Bool("Ctl3D", true);
    TLibraryProperty DockSite = Bool("DockSite", false);
    TLibraryProperty DragCursor = Cursor("DragCursor", "crDrag");
    TLibraryProperty DragKind = Enum("DragKind", "TDragKind", "dkDrag", {"dkDrag", "dkDock"});
    TLibraryProperty DragMode =
        Enum("DragMode", "TDragMode", "dmManual", {"dmManual", "dmAutomatic"});
    TLibraryProperty Enabled = Bool("Enabled", true);
    TLibraryProperty Font = Obj("Font", "TFont");
    TLibraryProperty HideSelection = Bool("HideSelection", true);
    TLibraryProperty Images = Ref("Images", "TCustomImageList");
    TLibraryProperty ItemHeight = Int("ItemHeight", "16");
    TLibraryProperty ItemIndex = Int("ItemIndex", "-1");
    TLibraryProperty Items = Obj("Items", "TStrings");
    TLibraryProperty MaxLength = Int("MaxLength", "0");
    TLibraryProperty OEMConvert = Bool("OEMConvert", false);
    TLibraryProperty ParentBiDiMode = Bool("ParentBiDiMode", true);
    TLibraryProperty ParentColor = Bool("ParentColor", true);
    TLibraryProperty ParentCtl3D = Bool("ParentCtl3D", true);
    TLibraryProperty ParentFont = Bool("ParentFont", true);
    TLibraryProperty ParentShowHint = Bool("ParentShowHint", true);
    TLibraryProperty PopupMenu = Ref("PopupMenu", "TPopupMenu");
    TLibraryProperty ReadOnly = Bool("ReadOnly", false);
    TLibraryProperty ShowHint = Bool("ShowHint", false);
    TLibraryProperty Sorted = Bool("Sorted", false);
    TLibraryProperty TabOrder = Int("TabOrder", "-1");
    TLibraryProperty TabStop = Bool("TabStop", false);
    TLibraryProperty Text = Str("Text", "TCaption");
    TLibraryProperty Transparent = Bool("Transparent", false);
    TLibraryProperty UseDockManager = Bool("UseDockManager", true);
    TLibraryProperty Visible = Bool("Visible", true);
    TLibraryProperty WordWrap = Bool("WordWrap", false);
    TLibraryProperty MenuAuto = Enum("AutoHotkeys", "TMenuAutoFlag", "maAutomatic",
                                     {"maAutomatic", "maManual", "maParent"});

    // Events.
    List Click = {Ev("OnClick")};
    List DblClick = {Ev("OnDblClick")};
    List Change = {Ev("OnChange")};
    List Focus = {Ev("OnEnter"), Ev("OnExit")};
    List Keys = {Ev("OnKeyDown", "TKeyEvent"), Ev("OnKeyPress", "TKeyPressEvent"),
                 Ev("OnKeyUp", "TKeyEvent")};
    List Wheel = {Ev("OnMouseWheel", "TMouseWheelEvent"),
                  Ev("OnMouseWheelDown", "TMouseWheelUpDownEvent"),
                  Ev("OnMouseWheelUp", "TMouseWheelUpDownEvent")};
    List DockSiteEvents = {Ev("OnDockDrop", "TDockDropEvent"), Ev("OnDockOver", "TDockOverEvent"),
                           Ev("OnGetSiteInfo", "TGetSiteInfoEvent"),
                           Ev("OnUnDock", "TUnDockEvent")};
    List Resize = {Ev("OnCanResize", "TCanResizeEvent"),
                   Ev("OnConstrainedResize", "TConstrainedResizeEvent"), Ev("OnResize")};
    // What every control reports: its context menu, the mouse, dragging and docking.
    List Pointer = {
        Ev("OnContextPopup", "TContextPopupEvent"), Ev("OnMouseDown", "TMouseEvent"),
        Ev("OnMouseMove", "TMouseMoveEvent"),       Ev("OnMouseUp", "TMouseEvent"),
        Ev("OnDragDrop", "TDragDropEvent"),         Ev("OnDragOver", "TDragOverEvent"),
        Ev("OnEndDrag", "TEndDragEvent"),           Ev("OnStartDrag", "TStartDragEvent"),
        Ev("OnEndDock", "TEndDragEvent"),           Ev("OnStartDock", "TStartDockEvent")};

    // What nearly every control of the library publishes.
    List Control() const {
        return {Anchors, BiDiMode,       Constraints, DragCursor,     DragKind,  DragMode, Enabled,
                Font,    ParentBiDiMode, ParentFont,  ParentShowHint, PopupMenu, ShowHint, Visible};
    }
    // A control that takes the focus.
    List WinControl() const { return Join({Control(), {Ctl3D, ParentCtl3D, TabOrder}}); }
    // The events of a control that is clicked but takes no focus.
    List ClickEvents() const { return Join({Click, DblClick, Pointer}); }
    // The events of a control that takes the focus and the keyboard.
    List WinEvents() const { return Join({Click, Focus, Keys, Pointer}); }
    // A container that other controls dock to.
    List Container() const {
        return Join({WinControl(), {Align, AutoSize, Caption, DockSite, ColorBtnFace}});
    }
    List ContainerEvents() const {
        return Join({Click, DblClick, Focus, DockSiteEvents, Resize, Pointer});
    }
};

// ---------------------------------------------------------------------------------------------
// The classes

// The table is laid out by hand, a class's properties then its events.
// clang-format off
std::map<std::string, List> BuildCatalog() {
    const TCommon c;
    std::map<std::string, List> m;
    auto add = [&](const char* cls, List own) { m[rtl::LowerCase(cls)] = std::move(own); };

    // TComponent and TControl publish a few in declaration order; the others follow the
    // library's alphabetical order.
    add("TComponent", {Str("Name", "TComponentName"), Int("Tag", "0")});
    add("TControl", {
        Int("Left"), Int("Top"), Int("Width"), Int("Height"), Cursor("Cursor", "crDefault"),
        Str("Hint"), Enum("HelpType", "THelpType", "htContext", {"htKeyword", "htContext"}),
        Str("HelpKeyword"), Int("HelpContext", "0")});
    // The scrolling controls (forms, frames, scroll boxes) share their scroll bars.
    add("TScrollingWinControl", {
        Obj("HorzScrollBar", "TControlScrollBar"), Obj("VertScrollBar", "TControlScrollBar")});

    add("TForm", Published(Join({c.Control(), {
        c.Action, Ref("ActiveControl", "TWinControl"), c.Align, Bool("AlphaBlend", false),
        Int("AlphaBlendValue", "255"), Bool("AutoScroll", true), c.AutoSize,
        SetOf("BorderIcons", "TBorderIcons", "[biSystemMenu, biMinimize, biMaximize]",
              {"biSystemMenu", "biMinimize", "biMaximize", "biHelp"}),
        Enum("BorderStyle", "TFormBorderStyle", "bsSizeable",
             {"bsNone", "bsSingle", "bsSizeable", "bsDialog", "bsToolWindow", "bsSizeToolWin"}),
        c.BorderWidth, c.Caption, Int("ClientHeight"), Int("ClientWidth"), c.ColorBtnFace,
        c.Ctl3D,
        Enum("DefaultMonitor", "TDefaultMonitor", "dmActiveForm",
             {"dmDesktop", "dmPrimary", "dmMainForm", "dmActiveForm"}),
        c.DockSite,
        Enum("FormStyle", "TFormStyle", "fsNormal",
             {"fsNormal", "fsMDIChild", "fsMDIForm", "fsStayOnTop"}),
        Str("HelpFile"), Obj("Icon", "TIcon"), Bool("KeyPreview", false), Ref("Menu", "TMainMenu"),
        Ref("ObjectMenuItem", "TMenuItem"), Bool("OldCreateOrder", false),
        With(c.ParentFont, "False"), Int("PixelsPerInch", "96"),
        Enum("Position", "TPosition", "poDesigned",
             {"poDesigned", "poDefault", "poDefaultPosOnly", "poDefaultSizeOnly",
              "poScreenCenter", "poDesktopCenter", "poMainFormCenter", "poOwnerFormCenter"}),
        Enum("PrintScale", "TPrintScale", "poProportional",
             {"poNone", "poProportional", "poPrintToFit"}),
        Bool("Scaled", true), Bool("ScreenSnap", false), Int("SnapBuffer", "10"),
        Bool("TransparentColor", false), Color("TransparentColorValue", "clBlack"),
        With(c.UseDockManager, "False"), With(c.Visible, "False"), Ref("WindowMenu", "TMenuItem"),
        Enum("WindowState", "TWindowState", "wsNormal", {"wsNormal", "wsMinimized", "wsMaximized"}),
        Ev("OnActivate"), Ev("OnClose", "TCloseEvent"), Ev("OnCloseQuery", "TCloseQueryEvent"),
        Ev("OnCreate"), Ev("OnDeactivate"), Ev("OnDestroy"), Ev("OnHelp", "THelpEvent"),
        Ev("OnHide"), Ev("OnPaint"), Ev("OnShortCut", "TShortCutEvent"), Ev("OnShow")},
        c.ClickEvents(), c.Keys, c.Wheel, c.DockSiteEvents, c.Resize}),
        {"DragCursor", "OnEndDrag", "OnStartDrag"}));

    add("TDataModule", Published({Bool("OldCreateOrder", false), Ev("OnCreate"), Ev("OnDestroy")}));

    add("TFrame", Published(Join({c.Container(), {
        Bool("AutoScroll", true), c.ParentColor, c.TabStop},
        c.ContainerEvents(), c.Wheel}), {"Caption"}));

    add("TPanel", Published(Join({c.Container(), {
        With(c.Alignment, "taCenter"),
        Enum("BevelInner", "TPanelBevel", "bvNone", {"bvNone", "bvLowered", "bvRaised", "bvSpace"}),
        Enum("BevelOuter", "TPanelBevel", "bvRaised",
             {"bvNone", "bvLowered", "bvRaised", "bvSpace"}),
        Int("BevelWidth", "1"), c.BorderWidth, With(c.BorderStyle, "bsNone"),
        Bool("FullRepaint", true), Bool("Locked", false), With(c.ParentColor, "False"), c.TabStop,
        c.UseDockManager},
        c.ContainerEvents()})));

    add("TGroupBox", Published(Join({c.WinControl(), {
        c.Align, c.Caption, c.ColorBtnFace, c.DockSite, c.ParentColor, c.TabStop},
        c.ClickEvents(), c.Focus, c.DockSiteEvents})));

    add("TRadioGroup", Published(Join({c.WinControl(), {
        c.Align, c.Caption, c.ColorBtnFace, Int("Columns", "1"), c.ItemIndex, c.Items,
        c.ParentColor, c.TabStop},
        c.Click, c.Focus, c.Pointer}),
        {"OnMouseDown", "OnMouseMove", "OnMouseUp"}));

    add("TLabel", Published(Join({c.Control(), {
        c.Align, c.Alignment, With(c.AutoSize, "True"), c.Caption, c.ColorBtnFace,
        Ref("FocusControl", "TWinControl"),
        Enum("Layout", "TTextLayout", "tlTop", {"tlTop", "tlCenter", "tlBottom"}),
        c.ParentColor, Bool("ShowAccelChar", true), c.Transparent, c.WordWrap,
        Ev("OnMouseEnter"), Ev("OnMouseLeave")},
        c.ClickEvents()})));

    List editCommon = Join({c.WinControl(), {
        c.BevelKind, c.BorderStyle, c.ColorWindow, c.HideSelection, c.MaxLength, c.OEMConvert,
        With(c.ParentColor, "False"), c.ReadOnly, With(c.TabStop, "True")},
        c.Change, c.DblClick, c.WinEvents()});
    add("TEdit", Published(Join({editCommon, {
        Bool("AutoSelect", true), With(c.AutoSize, "True"), c.CharCase, c.Text}})));
    add("TMemo", Published(Join({editCommon, {
        c.Align, c.Alignment, Obj("Lines", "TStrings"),
        Enum("ScrollBars", "TScrollStyle", "ssNone",
             {"ssNone", "ssHorizontal", "ssVertical", "ssBoth"}),
        Bool("WantReturns", true), Bool("WantTabs", false), With(c.WordWrap, "True")}})));

    add("TButton", Published(Join({c.WinControl(), {
        c.Action, Bool("Cancel", false), c.Caption, Bool("Default", false),
        Int("ModalResult", "0"), With(c.TabStop, "True"), c.WordWrap},
        c.WinEvents()})));

    // The buttons with a glyph: a bitmap of NumGlyphs pictures side by side, beside the caption.
    List glyphCommon = {
        Obj("Glyph", "TBitmap"),
        Enum("Layout", "TButtonLayout", "blGlyphLeft",
             {"blGlyphLeft", "blGlyphRight", "blGlyphTop", "blGlyphBottom"}),
        Int("Margin", "-1"), Int("NumGlyphs", "1"), Int("Spacing", "4")};
    add("TBitBtn", Published(Join({glyphCommon, {
        Enum("Kind", "TBitBtnKind", "bkCustom",
             {"bkCustom", "bkOK", "bkCancel", "bkHelp", "bkYes", "bkNo", "bkClose", "bkAbort",
              "bkRetry", "bkIgnore", "bkAll"}),
        Enum("Style", "TButtonStyle", "bsAutoDetect", {"bsAutoDetect", "bsWin31", "bsNew"})}})));
    add("TSpeedButton", Published(Join({c.Control(), glyphCommon, {
        c.Action, Bool("AllowAllUp", false), c.Caption, Bool("Down", false), Bool("Flat", false),
        Int("GroupIndex", "0"), With(c.Transparent, "True")},
        c.ClickEvents()}), {"DragCursor", "DragKind", "DragMode", "OnContextPopup",
                            "OnDragDrop", "OnDragOver", "OnEndDrag", "OnStartDrag", "OnEndDock",
                            "OnStartDock"}));

    List checkCommon = Join({c.WinControl(), {
        c.Action,
        Enum("Alignment", "TLeftRight", "taRightJustify", {"taLeftJustify", "taRightJustify"}),
        c.Caption, Bool("Checked", false), c.ColorBtnFace, c.ParentColor, c.WordWrap},
        c.WinEvents()});
    add("TCheckBox", Published(Join({checkCommon, {
        Bool("AllowGrayed", false),
        Enum("State", "TCheckBoxState", "cbUnchecked", {"cbUnchecked", "cbChecked", "cbGrayed"}),
        With(c.TabStop, "True")}})));
    add("TRadioButton", Published(Join({checkCommon, {c.TabStop}, c.DblClick})));

    List listCommon = Join({c.WinControl(), {
        Bool("AutoComplete", true), c.ColorWindow, c.ItemHeight, c.Items,
        With(c.ParentColor, "False"), c.Sorted, With(c.TabStop, "True"),
        Ev("OnDrawItem", "TDrawItemEvent"), Ev("OnMeasureItem", "TMeasureItemEvent")},
        c.DblClick, c.WinEvents()});
    add("TListBox", Published(Join({listCommon, {
        c.Align, c.BevelKind, c.BorderStyle, Int("Columns", "0"), Bool("ExtendedSelect", true),
        Bool("IntegralHeight", false), Bool("MultiSelect", false), Int("ScrollWidth", "0"),
        Enum("Style", "TListBoxStyle", "lbStandard",
             {"lbStandard", "lbOwnerDrawFixed", "lbOwnerDrawVariable", "lbVirtual",
              "lbVirtualOwnerDraw"}),
        Int("TabWidth", "0")}})));
    add("TComboBox", Published(Join({listCommon, {
        Bool("AutoCloseUp", false), Bool("AutoDropDown", false), c.BevelKind, c.CharCase,
        Int("DropDownCount", "8"), c.ItemIndex, c.MaxLength,
        Enum("Style", "TComboBoxStyle", "csDropDown",
             {"csDropDown", "csSimple", "csDropDownList", "csOwnerDrawFixed",
              "csOwnerDrawVariable"}),
        c.Text, Ev("OnCloseUp"), Ev("OnDropDown"), Ev("OnSelect")},
        c.Change})));

    add("TPageControl", Published(Join({c.WinControl(), {
        Ref("ActivePage", "TTabSheet"), c.Align, c.DockSite, Bool("HotTrack", false), c.Images,
        Bool("MultiLine", false), Bool("OwnerDraw", false), Bool("RaggedRight", false),
        Bool("ScrollOpposite", false),
        Enum("Style", "TTabStyle", "tsTabs", {"tsTabs", "tsButtons", "tsFlatButtons"}),
        Int("TabHeight", "0"),
        Enum("TabPosition", "TTabPosition", "tpTop", {"tpTop", "tpBottom", "tpLeft", "tpRight"}),
        With(c.TabStop, "True"), Int("TabWidth", "0"),
        Ev("OnChanging", "TTabChangingEvent"), Ev("OnDrawTab", "TDrawTabEvent"),
        Ev("OnGetImageIndex", "TTabGetImageEvent"), Ev("OnResize")},
        c.Change, c.Focus, c.DockSiteEvents, c.Pointer})));
    add("TTabSheet", Published(Join({{
        c.BorderWidth, c.Caption, c.Constraints, c.DragMode, c.Enabled, c.Font,
        Bool("Highlighted", false), Int("ImageIndex", "0"), Int("PageIndex", "0"), c.ParentFont,
        c.ParentShowHint, c.PopupMenu, c.ShowHint, Bool("TabVisible", true), c.Visible,
        Ev("OnHide"), Ev("OnResize"), Ev("OnShow")},
        c.Focus, c.Pointer}),
        {"OnEndDock", "OnStartDock"}));

    add("TImage", Published(Join({{
        c.Align, c.Anchors, c.AutoSize, Bool("Center", false), c.Constraints, c.DragCursor,
        c.DragKind, c.DragMode, c.Enabled, Bool("IncrementalDisplay", false), c.ParentShowHint,
        Obj("Picture", "TPicture"), c.PopupMenu, Bool("Proportional", false), c.ShowHint,
        Bool("Stretch", false), c.Transparent, c.Visible, Ev("OnProgress", "TProgressEvent")},
        c.ClickEvents()})));
    add("TShape", Published(Join({{
        c.Align, c.Anchors, Obj("Brush", "TBrush"), c.Constraints, c.DragCursor, c.DragKind,
        c.DragMode, c.Enabled, c.ParentShowHint, Obj("Pen", "TPen"),
        Enum("Shape", "TShapeType", "stRectangle",
             {"stRectangle", "stSquare", "stRoundRect", "stRoundSquare", "stEllipse", "stCircle"}),
        c.ShowHint, c.Visible},
        c.Pointer})));
    add("TBevel", Published({
        c.Align, c.Anchors, c.Constraints, c.ParentShowHint,
        Enum("Shape", "TBevelShape", "bsBox",
             {"bsBox", "bsFrame", "bsTopLine", "bsBottomLine", "bsLeftLine", "bsRightLine",
              "bsSpacer"}),
        c.ShowHint, Enum("Style", "TBevelStyle", "bsLowered", {"bsLowered", "bsRaised"}),
        c.Visible}));

    add("TScrollBox", Published(Join({c.WinControl(), {
        c.Align, Bool("AutoScroll", true), c.AutoSize, c.BevelKind, c.BorderStyle, c.ColorBtnFace,
        c.DockSite, c.ParentColor, c.TabStop},
        c.ContainerEvents(), c.Wheel})));

    add("TSplitter", Published({
        With(c.Align, "alLeft"), Bool("AutoSnap", true), Bool("Beveled", false), c.ColorBtnFace,
        c.Constraints, Cursor("Cursor", "crHSplit"), Int("MinSize", "30"), c.ParentColor,
        Enum("ResizeStyle", "TResizeStyle", "rsPattern",
             {"rsNone", "rsLine", "rsUpdate", "rsPattern"}),
        c.Visible, Ev("OnCanResize", "TCanResizeEvent"), Ev("OnMoved"), Ev("OnPaint")}));

    add("TStatusBar", Published(Join({c.Control(), {
        c.Action, With(c.Align, "alBottom"), Bool("AutoHint", false), c.BorderWidth,
        c.ColorBtnFace, Obj("Panels", "TStatusPanels"), With(c.ParentColor, "False"),
        With(c.ParentFont, "False"), Bool("SimplePanel", false), Str("SimpleText"),
        Bool("SizeGrip", true), Bool("UseSystemFont", true),
        Ev("OnCreatePanelClass", "TSBCreatePanelClassEvent"), Ev("OnDrawPanel", "TDrawPanelEvent"),
        Ev("OnHint"), Ev("OnResize")},
        c.ClickEvents()})));

    add("TToolBar", Published(Join({c.Container(), {
        With(c.Align, "alTop"), Int("ButtonHeight", "22"), Int("ButtonWidth", "23"),
        c.BorderWidth, Ref("DisabledImages", "TCustomImageList"),
        SetOf("EdgeBorders", "TEdgeBorders", "[ebTop]", {"ebLeft", "ebTop", "ebRight", "ebBottom"}),
        Enum("EdgeInner", "TEdgeStyle", "esRaised", {"esNone", "esRaised", "esLowered"}),
        Enum("EdgeOuter", "TEdgeStyle", "esLowered", {"esNone", "esRaised", "esLowered"}),
        Bool("Flat", false), Ref("HotImages", "TCustomImageList"), c.Images, Int("Indent", "0"),
        Bool("List", false), Ref("Menu", "TMainMenu"), c.ParentColor, Bool("ShowCaptions", false),
        c.TabStop, c.Transparent, Bool("Wrapable", true),
        Ev("OnCustomDraw", "TTBCustomDrawEvent")},
        c.ContainerEvents()})));

    add("TTimer", {c.Enabled, Int("Interval", "1000"), Ev("OnTimer")});

    add("TMainMenu", Published({
        c.MenuAuto, Enum("AutoLineReduction", "TMenuAutoFlag", "maAutomatic", c.MenuAuto.Values),
        Bool("AutoMerge", false), c.BiDiMode, c.Images, Obj("Items", "TMenuItem"),
        Bool("OwnerDraw", false), c.ParentBiDiMode, Ev("OnChange", "TMenuChangeEvent")}));
    add("TMenuItem", Published({
        c.Action, Bool("AutoCheck", false), With(c.MenuAuto, "maParent"),
        Enum("AutoLineReduction", "TMenuAutoFlag", "maParent", c.MenuAuto.Values),
        Obj("Bitmap", "TBitmap"),
        Enum("Break", "TMenuBreak", "mbNone", {"mbNone", "mbBreak", "mbBarBreak"}),
        c.Caption, Bool("Checked", false), Bool("Default", false), c.Enabled,
        Int("GroupIndex", "0"), Int("HelpContext", "0"), Str("Hint"), Int("ImageIndex", "-1"),
        Bool("RadioItem", false), Int("ShortCut", "0"), Ref("SubMenuImages", "TCustomImageList"),
        c.Visible, Ev("OnAdvancedDrawItem", "TAdvancedMenuDrawItemEvent"), Ev("OnClick"),
        Ev("OnDrawItem", "TMenuDrawItemEvent"), Ev("OnMeasureItem", "TMenuMeasureItemEvent")}));

    add("TActionList", Published({
        c.Images,
        Enum("State", "TActionListState", "asNormal",
             {"asNormal", "asSuspended", "asSuspendedEnabled"}),
        Ev("OnChange"), Ev("OnExecute", "TActionEvent"), Ev("OnUpdate", "TActionEvent")}));
    add("TContainedAction", {Str("Category")});
    add("TAction", Published({
        Bool("AutoCheck", false), c.Caption, Bool("Checked", false), c.Enabled,
        Int("GroupIndex", "0"), Int("HelpContext", "0"), Str("HelpKeyword"),
        Enum("HelpType", "THelpType", "htKeyword", {"htKeyword", "htContext"}), Str("Hint"),
        Int("ImageIndex", "-1"), Obj("SecondaryShortCuts", "TShortCutList"), Int("ShortCut", "0"),
        c.Visible, Ev("OnExecute"), Ev("OnHint", "THintEvent"), Ev("OnUpdate")}));

    add("TImageList", Published({
        Int("AllocBy", "4"), Color("BkColor", "clNone"), Color("BlendColor", "clNone"),
        Enum("DrawingStyle", "TDrawingStyle", "dsNormal",
             {"dsFocus", "dsSelected", "dsNormal", "dsTransparent"}),
        Int("Height", "16"), Enum("ImageType", "TImageType", "itImage", {"itImage", "itMask"}),
        Bool("Masked", true), Bool("ShareImages", false), Int("Width", "16"), Ev("OnChange")}));
    return m;
}
// clang-format on

const std::map<std::string, List>& Catalog() {
    static const std::map<std::string, List> catalog = BuildCatalog();
    return catalog;
}

bool SameName(std::string_view a, std::string_view b) {
    return rtl::SameText(a, b);
}

} // namespace

const std::vector<TLibraryProperty>* LibraryClassOwnProperties(std::string_view className) {
    auto it = Catalog().find(rtl::LowerCase(std::string(className)));
    return it == Catalog().end() ? nullptr : &it->second;
}

bool IsLibraryClass(std::string_view className) {
    return SameName(className, "TObject") || LibraryClassOwnProperties(className) ||
           !LibraryClassParent(className).empty();
}

const std::vector<TLibraryProperty>& LibraryClassProperties(std::string_view className) {
    static std::mutex mutex;
    static std::map<std::string, List> merged;
    std::lock_guard lock(mutex);
    std::string key = rtl::LowerCase(std::string(className));
    if (auto it = merged.find(key); it != merged.end()) return it->second;
    // The class and its ancestors, the class first.
    std::vector<std::string> chain;
    if (IsLibraryClass(className))
        for (std::string cls(className); !cls.empty() && chain.size() < 64;
             cls = LibraryClassParent(cls))
            chain.push_back(cls);
    List all;
    for (auto cls = chain.rbegin(); cls != chain.rend(); ++cls) {
        const List* own = LibraryClassOwnProperties(*cls);
        if (!own) continue;
        for (const TLibraryProperty& p : *own) {
            auto same = std::find_if(all.begin(), all.end(), [&](const TLibraryProperty& q) {
                return SameName(q.Name, p.Name);
            });
            // A class that publishes an inherited property anew keeps its place in the list
            // and gives it its own default.
            if (same != all.end())
                *same = p;
            else
                all.push_back(p);
        }
    }
    return merged.emplace(key, std::move(all)).first->second;
}

const std::vector<TLibraryProperty>& PublishedProperties(const TDesignComponent& c) {
    if (IsLibraryClass(c.ClassName)) return LibraryClassProperties(c.ClassName);
    for (const std::string& ancestor : c.Ancestors)
        if (IsLibraryClass(ancestor)) return LibraryClassProperties(ancestor);
    static const List none;
    return none;
}

const TLibraryProperty* FindPublishedProperty(const TDesignComponent& c, std::string_view name) {
    for (const TLibraryProperty& p : PublishedProperties(c))
        if (SameName(p.Name, name)) return &p;
    return nullptr;
}

TDesignProperty DefaultDesignProperty(const TLibraryProperty& property) {
    TDesignProperty p;
    p.Name = property.Name;
    p.Text = property.Default;
    switch (property.Kind) {
    case K::Integer:
        p.Kind = TDesignValueKind::Integer;
        p.Int = std::strtoll(property.Default.c_str(), nullptr, 10);
        break;
    case K::Boolean:
        p.Kind = TDesignValueKind::Boolean;
        p.Int = property.Default == "True" ? 1 : 0;
        break;
    case K::String:
        // The catalog's string defaults are plain quoted text.
        p.Kind = TDesignValueKind::String;
        p.Str = property.Default.size() >= 2
                    ? property.Default.substr(1, property.Default.size() - 2)
                    : std::string();
        break;
    case K::Ident:
    case K::Event:
        p.Kind = TDesignValueKind::Ident;
        p.Str = property.Default;
        break;
    case K::Set:
        p.Kind = TDesignValueKind::Set;
        break;
    case K::Class:
        p.Kind = TDesignValueKind::Null;
        break;
    }
    return p;
}

bool FitLibraryValue(const TLibraryProperty& property, TDesignProperty& value) {
    switch (property.Kind) {
    case K::Integer:
        return value.Kind == TDesignValueKind::Integer;
    case K::Boolean:
        return value.Kind == TDesignValueKind::Boolean;
    case K::String:
        return value.Kind == TDesignValueKind::String;
    case K::Set:
        return value.Kind == TDesignValueKind::Set;
    case K::Event:
        return value.Kind == TDesignValueKind::Ident;
    case K::Class:
        // An object takes no value of its own (a font stores Font.Name and the like), but a
        // collection is stored under the property's name and is written back whole.
        return value.Kind == TDesignValueKind::Collection;
    case K::Ident:
        break;
    }
    if (value.Kind == TDesignValueKind::Integer) return property.TakesIntegers;
    if (value.Kind != TDesignValueKind::Ident) return false;
    if (property.Values.empty()) return true;
    auto known = std::find_if(property.Values.begin(), property.Values.end(),
                              [&](const std::string& v) { return SameName(v, value.Str); });
    if (known == property.Values.end()) return false;
    if (*known != value.Str) {
        // Written in other letter case: stored with the library's spelling, and written from
        // it rather than from the bytes read.
        value.Raw.clear();
        value.Str = *known;
        value.Text = *known;
    }
    return true;
}

TFormFrame FormFrame(const TDesignComponent& form) {
    TFormFrame frame;
    std::string menu = form.StrProp("Menu");
    if (!menu.empty() && form.FindComponent(menu)) frame.Height += 19;
    return frame;
}

namespace {
bool IsForm(const TDesignComponent& c) {
    return c.InheritsFrom("TCustomForm") && !c.Parent();
}
} // namespace

int ClientWidthOf(const TDesignComponent& c, int fallbackWidth) {
    int width = int(c.IntProp("Width", fallbackWidth));
    return IsForm(c) ? int(c.IntProp("ClientWidth", width - FormFrame(c).Width)) : width;
}

int ClientHeightOf(const TDesignComponent& c, int fallbackHeight) {
    int height = int(c.IntProp("Height", fallbackHeight));
    return IsForm(c) ? int(c.IntProp("ClientHeight", height - FormFrame(c).Height)) : height;
}

std::pair<std::string, int64_t> FormSizeToStore(const TDesignComponent& c, const std::string& name,
                                                int64_t value) {
    if (!IsForm(c) || c.FindProperty(name)) return {name, value};
    TFormFrame frame = FormFrame(c);
    const struct {
        const char* outer;
        const char* client;
        int frame;
    } pairs[] = {{"Width", "ClientWidth", frame.Width}, {"Height", "ClientHeight", frame.Height}};
    for (const auto& pair : pairs) {
        if (SameName(name, pair.outer) && c.FindProperty(pair.client))
            return {pair.client, value - pair.frame};
        if (SameName(name, pair.client) && c.FindProperty(pair.outer))
            return {pair.outer, value + pair.frame};
    }
    return {name, value};
}

TDesignProperty UnstoredDesignProperty(const TDesignComponent& c,
                                       const TLibraryProperty& property) {
    TDesignProperty p = DefaultDesignProperty(property);
    if (p.Kind != TDesignValueKind::Integer || !IsForm(c)) return p;
    std::optional<int64_t> derived;
    TFormFrame frame = FormFrame(c);
    if (SameName(property.Name, "ClientWidth") && c.FindProperty("Width"))
        derived = ClientWidthOf(c);
    else if (SameName(property.Name, "ClientHeight") && c.FindProperty("Height"))
        derived = ClientHeightOf(c);
    else if (SameName(property.Name, "Width") && c.FindProperty("ClientWidth"))
        derived = c.IntProp("ClientWidth") + frame.Width;
    else if (SameName(property.Name, "Height") && c.FindProperty("ClientHeight"))
        derived = c.IntProp("ClientHeight") + frame.Height;
    if (derived) {
        p.Int = *derived;
        p.Text = std::to_string(*derived);
    }
    return p;
}

} // namespace workbench
