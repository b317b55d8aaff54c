// Unit SpcEditor: the generic settings editor. TSpcEditor is a non-visual component that shows
// any tree of settings objects in a form of its own (TSpcForm): the objects as a tree on the
// left, and for the selected node one label and one control per published property on the
// right. It knows nothing of the settings it edits: the tree, the controls and the transfer of
// values come from type information, and every operation on the objects goes through the table
// of functions (TInitData), so that the objects may live in another module.
//
// Two modes, fixed by how the editor is started:
// - specification mode (ShowTree with the address of the caller's variable): the editor works on
//   a private clone; the caller's object changes only when the user saves, and files can be
//   loaded and saved in the four forms;
// - direct mode (ShowTreeEx with any persistent): the editor works on the object itself.
//
// The look of the controls is set by text (ControlParams, RedefiedParams), names shown to the
// user by a translation table (TranslatingTable); hooks (Before..., After..., On...) may replace
// any step. Failures are ESpcEditorError or the conversion errors of the runtime; reading a
// control that the user left with a bad value keeps the selection on its node.
#pragma once

#include "editor/SpcControls.h"
#include "editor/SpcObjectOps.h"
#include "editor/SpcShrTypes.h"
#include "foundation/Classes.h"
#include "rtl/Classes.h"
#include "rtl/Graphics.h"

#include <QPointer>

#include <functional>
#include <memory>
#include <string>
#include <vector>

class QHeaderView;
class QIcon;
class QLabel;
class QPainter;
class QScrollArea;
class QStatusBar;
class QToolBar;
class QTreeWidget;
class QTreeWidgetItem;
class QWidget;

namespace zelvane {

RTL_EXCEPTION(ESpcEditorError, Exception)

class TSpcForm;
class TSpcNode;

// Editor texts that are not numbered.
inline constexpr const char* SSaveChanges = "Save changes in specification?";
inline constexpr const char* SDeleteElement = "Delete selected element?";
inline constexpr const char* SDeleteAllElements = "Delete all elements of the selected node?";
inline constexpr const char* SPropertiesCount = "Properties: %d";
inline constexpr const char* SSpcFormCaption = "Specification %s";
inline constexpr const char* SParameterSection = "Parameter";
inline constexpr const char* SValueSection = "Value";
inline constexpr const char* SSaveSpcTitle = "Save specification";
inline constexpr const char* SLoadSpcTitle = "Load specification";
inline constexpr const char* SNotSupported = "Operation not supported";
// The pair that stands for a line break in a label.
inline constexpr const char* PseudoNewLine = "##";

// The look of the label or control columns.
class TPaintAreaInfo : public rtl::TPersistent {
    RTL_CLASS(TPaintAreaInfo, rtl::TPersistent)
public:
    TPaintAreaInfo();
    // Copies Font, LeftMargin, RightMargin and DefAreaWidth; not Alignment.
    void Assign(rtl::TPersistent* source) override;

    TAlignment Alignment = taLeftJustify;
    int32_t DefAreaWidth = 0;
    rtl::TFont Font;
    int32_t LeftMargin = 0;
    int32_t RightMargin = 0;
};

class TLabelAreaInfo : public TPaintAreaInfo {
    RTL_CLASS(TLabelAreaInfo, TPaintAreaInfo)
public:
    TLabelAreaInfo();
    bool AutoWidth = true;
};

class TControlAreaInfo : public TPaintAreaInfo {
    RTL_CLASS(TControlAreaInfo, TPaintAreaInfo)
public:
    TControlAreaInfo();
};

// One pair of columns: the label and control panels and their header sections.
struct TAreaFrame {
    QPointer<QWidget> LabelPanel;
    QPointer<QWidget> ControlPanel;
    int LabelSection = 0;
    int ControlSection = 0;
    // Where the edge after this column was last drawn, in the scroll box's client coordinates.
    int EdgeX = -1;
};

// A property of an object that has a row when a node is shown.
struct TPropPair {
    rtl::TPersistent* Instance = nullptr;
    rtl::PPropInfo PropInfo = nullptr;
};

// The data of a tree node: the object it stands for and the rows it shows.
struct TInstDscr {
    rtl::TPersistent* Instance = nullptr;
    std::vector<TPropPair> Props;
};

class TSpcEditor : public rtl::TComponent {
    RTL_CLASS(TSpcEditor, rtl::TComponent)
    friend class TSpcForm;

public:
    explicit TSpcEditor(rtl::TComponent* owner = nullptr);
    ~TSpcEditor() override;

    // -- Properties ---------------------------------------------------------------------------
    bool ShowStatusBar() const { return showStatusBar_; }
    void SetShowStatusBar(bool value);
    bool SimpleMode = false;
    int ColCount() const { return colCount_; }
    void SetColCount(int value) { colCount_ = value < 1 ? 1 : value; }
    TControlAreaInfo& ControlAreaInfo() { return controlAreaInfo_; }
    TLabelAreaInfo& LabelAreaInfo() { return labelAreaInfo_; }
    rtl::TStrings* GetStrings(TSpcEdStringsKind kind) const;
    void SetStrings(TSpcEdStringsKind kind, const std::string& text);
    rtl::TStrings* ControlParams() const { return GetStrings(skControlParams); }
    rtl::TStrings* RedefiedParams() const { return GetStrings(skRedefiedParams); }
    rtl::TStrings* DisabledProps() const { return GetStrings(skDisabledProps); }
    rtl::TStrings* InvisibleProps() const { return GetStrings(skInvisibleProps); }
    rtl::TStrings* TranslatingTable() const { return GetStrings(skTranslatingTable); }
    std::string FormCaption;
    TSpcFormOptions FormOptions;
    TSpcEdOptions Options;
    TSpcEdVisibleButtons VisibleButtons;
    rtl::TFont HeaderFont;
    rtl::TFont TreeFont;
    std::string IniFileName;
    std::string IniSection = "SpcEditor";
    int TopInc = 4;

    // -- Events -------------------------------------------------------------------------------
    std::function<void(rtl::TPersistent* instance, rtl::PPropInfo propInfo, QWidget* parent,
                       const TChangeAction& changeAction, TNewControlData& data, bool& handled)>
        BeforeCreateControl;
    std::function<void(TControlInfo* info)> AfterCreateControl, AfterSetControlData,
        OnControlChange;
    std::function<void(QLabel* label, TControlInfo* info)> OnCreateLabel;
    std::function<void(TControlInfo* info, bool& handled)> BeforeSetControlData, OnDropControl;
    std::function<void(TControlInfo* info, bool& handled, bool& aborted)> BeforeGetControlData;
    std::function<void(TControlInfo* info, bool& aborted)> AfterGetControlData;
    std::function<void(TControlInfo* info, int areaWidth, bool& handled)> OnResizeControl;
    std::function<void(rtl::TPersistent* spc, const std::string& fileName, bool& allowSave)>
        BeforeSaveSpc;
    std::function<void(rtl::TPersistent* spc, const std::string& fileName)> AfterSaveSpc,
        OnLoadSpc;
    std::function<void(rtl::TPersistent* spc)> OnCreateSpc;
    std::function<void(rtl::TCollection* collection, rtl::TCollectionItem* item,
                       TCollNotification action, bool& allowChange)>
        OnCollectionChanging;
    std::function<void(rtl::TCollection* collection, rtl::TCollectionItem* item,
                       TCollNotification action)>
        OnCollectionChange;
    using TPlaceImage = std::function<void(QTreeWidgetItem* node, TNodeImageIndex which, int index)>;
    std::function<void(QTreeWidgetItem* node, TBaseClassIdent ident, rtl::TPersistent* instance,
                       const TPlaceImage& placeImage)>
        OnPlaceNodeImage;
    std::function<void(QTreeWidget* tree, bool& defaultSelect)> OnSelectStartNode;
    std::function<void(const std::string& iniFileName, const std::string& section,
                       std::string& iniData, bool& allowRead)>
        OnReadFormSetting;
    std::function<void(const std::string& iniFileName, const std::string& section,
                       const std::string& iniData, bool& allowWrite)>
        OnWriteFormSetting;

    // -- Operations ---------------------------------------------------------------------------
    // Keeps the table of functions; appHandle is accepted for hosts that hand in their window.
    virtual void Init(TInitData* initData, void* appHandle);
    void ShowTree();
    void ShowTree(rtl::TPersistent** spc);
    void ShowTreeEx(rtl::TPersistent* object);
    // Ends an editing pass; false keeps the form open.
    bool Release();
    bool Save();
    bool SaveAs();
    virtual bool SaveToFile(const std::string& fileName, TObjectStorageFormat format);
    void Load();
    bool LoadFromFile(const std::string& fileName, bool showErrors);
    bool LoadFromFile(rtl::TPersistent** spc, const std::string& fileName, bool showErrors);
    void Prepare();
    void UnPrepare();
    void UndoChanges() { modified_ = false; }
    void RebuildControls();
    TBaseClassIdent GetInstanceID(rtl::TObject* obj) const;
    bool FindInstanceID(rtl::TObject* obj, TBaseClassIdent& ident) const;
    void BeginUpdate(TAreaKind kind, int index);
    void EndUpdate(TAreaKind kind, int index);
    std::string Translate(const std::string& section, const std::string& ident);
    std::string TranslateEx(const std::string& section, const std::string& ident,
                            const std::string& def);
    void TranslateEnumNames(rtl::TStrings* names, const std::string& section);
    void SetNodeName(rtl::TObject* obj, const std::string& name);
    // Formats the template with "Control" and a line break and appends it to ControlParams.
    void UpdateControlParams(const std::string& templ);
    std::string GetFullPropName(rtl::TObject* obj, rtl::PPropInfo propInfo) const;
    // The next number a descendant gives its own rows.
    int32_t NextDescendantID() { return ++curDescendantID_; }

    // -- State --------------------------------------------------------------------------------
    bool Modified() const { return modified_; }
    bool Saved() const { return saved_; }
    TSpcEdStates State() const { return state_; }
    const std::string& SpcFileName() const { return spcFileName_; }
    void SetSpcFileName(const std::string& name);
    TObjectStorageFormat SpcFormat = osfBin;
    bool IsSpcRoot() const { return isSpcRoot_; }
    rtl::TPersistent* GetUpdatingSpc() const;
    TSpcForm* Form() const;
    const TControlList& Controls() const { return controlList_; }
    const std::vector<QPointer<QLabel>>& Labels() const { return labelList_; }
    const std::vector<TAreaFrame>& Frames() const { return frames_; }
    QTreeWidget* TreeView() const;
    const TSpcObjectOps& Ops() const { return ops_; }
    // The data of a tree node; nullptr for none.
    static TInstDscr* NodeData(QTreeWidgetItem* node);

    // Tree edits from the form's actions.
    void AddNode(QTreeWidgetItem* node);
    void DeleteNode(QTreeWidgetItem* node);
    void MoveNode(QTreeWidgetItem* node, TNodeMotion motion, int step);
    bool IsValidInsObj(rtl::TObject* obj) const;
    bool IsValidDelObj(rtl::TObject* obj) const;
    bool IsValidMoveObj(rtl::TObject* obj, TNodeMotion motion) const;

    // The gap kept between a header section's edge and its panel.
    static constexpr int AreaInset = 1;
    bool AreasVisible() const { return areasVisible_; }
    int AreaHeight() const { return areaHeight_; }

    // Draws the edges between the columns on the scroll box's content.
    void ScrollContentPainted(QPainter& painter);

    // The images of the tool buttons (0 to 9) and tree nodes (10 to 14).
    static QIcon ToolImage(int index);

protected:
    // -- Virtual steps, for descendants -------------------------------------------------------
    virtual void BuildTree();
    virtual bool CanNodeDefaultSelect(QTreeWidget* tree);
    virtual bool CanProcessProperty(rtl::TPersistent* instance, rtl::PPropInfo propInfo);
    virtual void ClearPaintAreas();
    virtual void ControlChange(QObject* sender);
    virtual void CreateNodeControls(TInstDscr* dscr);
    virtual void CreatePropControl(rtl::TPersistent* instance, rtl::PPropInfo propInfo,
                                   int areaIndex, int& top, int& labelWidth);
    virtual void DoAfterCreateControl(TControlInfo* info);
    virtual void DoBeforeCreateControl(rtl::TPersistent* instance, rtl::PPropInfo propInfo,
                                       QWidget* parent, TNewControlData& data, bool& handled);
    virtual void DoControlChange(TControlInfo* info);
    virtual void DoCreateLabel(QLabel* label, TControlInfo* info);
    virtual void DoCreateSpc(rtl::TPersistent* spc);
    virtual void DoPlaceNodeImages(QTreeWidgetItem* node, TBaseClassIdent ident,
                                   rtl::TPersistent* instance);
    virtual void DropControl(TControlInfo* info);
    virtual void GetControlData(TControlInfo* info, bool& aborted);
    virtual void GetControlsData();
    virtual void MakeForm();
    virtual void ProcessCollection(rtl::TCollection* collection, QTreeWidgetItem* parent,
                                   const std::string& nodeName);
    virtual QTreeWidgetItem* ProcessItem(rtl::TPersistent* instance, QTreeWidgetItem* parent,
                                         const std::string& nodeName);
    // Adds a node without data beside the node; tree building does not use it.
    QTreeWidgetItem* ProcessItemEx(TBaseClassIdent ident, QTreeWidgetItem* node,
                                   const std::string& nodeName);
    virtual void ReadFormSetting(const std::string& iniFile, const std::string& section,
                                 rtl::TStrings* strings);
    virtual void ResizeControl(TControlInfo* info, int areaWidth);
    virtual void SetControlData(TControlInfo* info);
    virtual void SetControlsData(TInstDscr* dscr, bool updateInstance);
    virtual void WriteFormSetting(const std::string& iniFile, const std::string& section,
                                  rtl::TStrings* strings);
    virtual bool CanCollectionChange(rtl::TCollection* collection, rtl::TCollectionItem* item,
                                     TCollNotification action);
    virtual bool CanReadFormSetting(const std::string& iniFile, const std::string& section,
                                    std::string& iniData);
    virtual bool CanWriteFormSetting(const std::string& iniFile, const std::string& section,
                                     const std::string& iniData);
    virtual void CollectionChange(rtl::TCollection* collection, rtl::TCollectionItem* item,
                                  TCollNotification action);

    // -- Helpers for descendants --------------------------------------------------------------
    void GetControlsDataEx();
    void CheckDisabledState();
    void SetControlParams(const std::string& controlIdent, TControlInfo* info, bool& centredLabel);
    // Makes the label of a row and places both; caption empty: the standard caption.
    void MakeLabel(TControlInfo* info, const std::string& caption, int& top, int& labelWidth,
                   bool centredLabel);
    void FreeControl(TControlInfo* info);
    QWidget* ControlPanel(int areaIndex) const;
    TChangeAction ChangeAction();
    std::string GetClassName(rtl::TObject* obj) const;
    std::string GetNodeName(rtl::TObject* obj);
    std::string FindNodeName(rtl::TObject* obj, const std::string& def);
    std::string FindNodeNameEx(rtl::TObject* obj, const std::string& section,
                               const std::string& def);
    std::string FindItemNodeName(rtl::TObject* item, const std::string& section,
                                 const std::string& def, int index);
    TIniStrings& ControlParamsIni() { return *controlParamsIni_; }
    TIniStrings& TranslatingIni() { return *translatingIni_; }

private:
    friend class TSpcNode;
    void SetSpcRoot(rtl::TPersistent** spc);
    void CheckInit();
    void DoShowTree();
    void MakeSpcClone();
    void DropSpcClone();
    void UpdateSpc();
    void SetInstanceIdent();
    void SetCaption();
    bool SaveChanges();
    bool DoSaveChanges();
    bool DoSave();
    bool InternalSaveAs(std::string& fileName, TObjectStorageFormat& format, bool temporary);
    void DoRelease();
    void ReportError(int textId, const std::string& fileName, const std::exception& e);
    void PrepareParams(TIniStrings& ini, rtl::TStrings* strings);
    void StringsChanged(rtl::TObject* sender);
    void ApplyParamsSection(TIniStrings& ini, const std::string& section, TControlInfo* info,
                            bool& centredLabel);
    TInstDscr* NewNodeDscr(QTreeWidgetItem*& node, QTreeWidgetItem* parent,
                           rtl::TPersistent* instance, const std::string& nodeName, size_t& next);
    std::string LabelCaption(TControlInfo* info);
    void PlaceNodeImages(QTreeWidgetItem* node, TBaseClassIdent ident, rtl::TPersistent* instance);
    void SelectNodeQuietly(QTreeWidgetItem* node);

    // Tree handlers, called by the form.
    void SpcTreeChange(QTreeWidgetItem* node);
    bool SpcTreeChanging(QTreeWidgetItem* node);
    void ShowSelected();
    void ShowTopItem();
    void ShowTreeTopItem();
    void FocusActiveControl();

    // Layout.
    void MakeAreas();
    void PlaceColumn(int index);
    void HeaderSectionTrack(int section, int width, bool end);
    void HideAreas();
    void UpdatePaintAreas(TAreaKind kind, int index);
    void UpdateLabelArea(int index);
    void UpdateControlArea(int index);
    void SetUpdateState(TAreaKind kind, int index, bool update);
    void SectionResize(int section);
    void UpdateContentSize();
    void DrawEdges();
    int SectionLeft(int section) const;
    int SectionWidth(int section) const;
    int SectionTextWidth(int section) const;

    TInitData* initRecord_ = nullptr;
    TSpcObjectOps ops_;
    TControlList controlList_;
    std::vector<QPointer<QLabel>> labelList_;
    bool showStatusBar_ = false;
    int colCount_ = 2;
    TLabelAreaInfo labelAreaInfo_;
    TControlAreaInfo controlAreaInfo_;
    std::unique_ptr<rtl::TStringList> strings_[5];
    std::unique_ptr<TIniStrings> controlParamsIni_, redefiedParamsIni_, translatingIni_;

    QPointer<TSpcForm> form_;
    // A closed form waiting for its deferred deletion; the editor frees it if it goes first.
    QPointer<TSpcForm> closedForm_;
    std::vector<TAreaFrame> frames_;
    rtl::TClass lastClass_ = nullptr;
    bool sameClass_ = false;
    bool areasVisible_ = false;
    bool edgesEnabled_ = false;
    bool defaultSelect_ = true;
    bool fullDragging_ = false;
    int areaHeight_ = 0;
    std::string spcFileName_;
    bool modified_ = false;
    bool saved_ = false;
    rtl::TPersistent* instance_ = nullptr;
    rtl::TPersistent* spcClone_ = nullptr;
    rtl::TPersistent** spcRoot_ = nullptr;
    bool isSpcRoot_ = false;
    TBaseClassIdent instanceIdent_ = ciUnknown;
    TSpcEdStates state_;
    QPointer<QWidget> activeControl_;
    int32_t curDescendantID_ = 0;
    std::string loadDir_, saveDir_;
    int saveFilterIndex_ = 1, loadFilterIndex_ = 1;
};

// Whether the code runs inside a library that must be handed a table of functions; the editor
// then refuses to start without one.
extern bool SpcEditorInLibrary;

} // namespace zelvane
