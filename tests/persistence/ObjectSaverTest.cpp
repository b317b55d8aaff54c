// The object savers: names, forms, hooks in their order, nil entries, format detection, safe
// loads, and per-object lists of TPropSaver.
#include "persistence/Storage.h"

#include "TestModel.h"
#include "rtl/FileStreams.h"
#include "rtl/ObjectText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

using namespace zelvane;
using namespace model;

namespace {

std::string Save(TObjectSaver& saver, TPersistentArray objs, TNameArray names = {}) {
    TStringStream s;
    saver.SaveObjects(objs, names, &s);
    return s.DataString();
}

// Records every hook call of a saver.
class Listener : public TObject {
public:
    std::vector<std::string> log;
    std::string vetoWrite = "<none>";
    bool vetoRead = false;

    void BeforeCreateWriter(TObjectSaver*, TStream*, std::unique_ptr<TFitWriter>&) {
        log.push_back("BeforeCreateWriter");
    }
    void AfterCreateWriter(TObjectSaver*, TFitWriter* w) {
        log.push_back(std::string("AfterCreateWriter") + (w->SortProps ? " sorted" : ""));
    }
    void BeforeWrite(TObjectSaver*, TPersistent*, const std::string& name, TFitWriter*,
                     bool& doWrite) {
        log.push_back("BeforeWrite " + name);
        if (name == vetoWrite) doWrite = false;
    }
    void AfterWrite(TObjectSaver*, TPersistent*, const std::string& name, TFitWriter*) {
        log.push_back("AfterWrite " + name);
    }
    void BeforeCreateReader(TObjectSaver*, TStream*, std::unique_ptr<TFitReader>&) {
        log.push_back("BeforeCreateReader");
    }
    void AfterCreateReader(TObjectSaver*, TFitReader* r) {
        log.push_back(std::string("AfterCreateReader") + (r->IgnoreErrors ? " ignoring" : ""));
    }
    void BeforeRead(TObjectSaver*, TPersistent* obj, TFitReader*, bool& doRead) {
        log.push_back(std::string("BeforeRead ") + (obj ? "obj" : "nil") +
                      (doRead ? " read" : " skip"));
        if (vetoRead) doRead = false;
    }
    void AfterRead(TObjectSaver*, TPersistent* obj, TFitReader*, const std::string& name) {
        log.push_back(std::string("AfterRead ") + (obj ? "obj " : "nil ") + name);
    }

    void Attach(TObjectSaver& s) {
        s.OnBeforeCreateWriter = TSaverCreateWriterEvent::Of<&Listener::BeforeCreateWriter>(this);
        s.OnAfterCreateWriter = TSaverWriterEvent::Of<&Listener::AfterCreateWriter>(this);
        s.OnBeforeWriteObject = TSaverBeforeWriteEvent::Of<&Listener::BeforeWrite>(this);
        s.OnAfterWriteObject = TSaverAfterWriteEvent::Of<&Listener::AfterWrite>(this);
        s.OnBeforeCreateReader = TSaverCreateReaderEvent::Of<&Listener::BeforeCreateReader>(this);
        s.OnAfterCreateReader = TSaverReaderEvent::Of<&Listener::AfterCreateReader>(this);
        s.OnBeforeReadObject = TSaverBeforeReadEvent::Of<&Listener::BeforeRead>(this);
        s.OnAfterReadObject = TSaverAfterReadEvent::Of<&Listener::AfterRead>(this);
    }
};

} // namespace

// ---------------------------------------------------------------------------------------------
// Saving

TEST(ObjectSaver, TheFormatExampleComesOutExactly) {
    TFoo foo;
    foo.Caption = "ab";
    TObjectSaver saver;
    TPersistent* objs[] = {&foo};
    std::string names[] = {"B"};
    EXPECT_EQ(Save(saver, objs, names), "TPF0" + Short("TFoo") + Short("B") + Short("Width") +
                                            Bytes({2, 100}) + Short("Caption") +
                                            Bytes({6, 2, 'a', 'b', 0, 0}));
}

TEST(ObjectSaver, NamesComeFromTheArrayOrTheOwnerChain) {
    TWidget app;
    app.SetName("App");
    auto* form = new TWidget(&app);
    form->SetName("Form");
    auto* panel = new TWidget(form);
    panel->SetName("Panel");
    auto* button = new TWidget(panel);
    button->SetName("Button");
    TWidget loose;
    loose.SetName("Loose");
    TFoo foo;
    TObjectSaver saver;
    Listener l;
    l.Attach(saver);
    TPersistent* objs[] = {button, &loose, &foo, panel};
    std::string names[] = {"", "", "", "Given.Name"};
    // Owners with a name and a named owner of their own stand in front; dots become underscores
    // in the stream.
    std::vector<std::string> roots;
    for (const Root& root : Roots(Save(saver, objs, names)))
        roots.push_back(root.Class + " " + root.Name);
    EXPECT_EQ(roots, (std::vector<std::string>{"TWidget Form_Panel_Button", "TWidget Loose",
                                               "TFoo ", "TWidget Given_Name"}));
    // The hooks see the names with their dots.
    EXPECT_EQ(l.log, (std::vector<std::string>{"BeforeCreateWriter", "AfterCreateWriter",
                                               "BeforeWrite Form.Panel.Button",
                                               "AfterWrite Form.Panel.Button", "BeforeWrite Loose",
                                               "AfterWrite Loose", "BeforeWrite ", "AfterWrite ",
                                               "BeforeWrite Given.Name", "AfterWrite Given.Name"}));
}

TEST(ObjectSaver, AVetoedObjectIsLeftOut) {
    Foos foos{100, 100};
    TObjectSaver saver;
    Listener l;
    l.vetoWrite = "A";
    l.Attach(saver);
    std::string names[] = {"A", "B"};
    std::vector<Root> roots = Roots(Save(saver, foos.pers, names));
    ASSERT_EQ(roots.size(), 1u);
    EXPECT_EQ(roots[0].Name, "B");
    EXPECT_EQ(std::count(l.log.begin(), l.log.end(), "AfterWrite A"), 0);

    // In text form the conversion still runs once per object and reads past the end.
    saver.Format = sofText;
    EXPECT_THROW(Save(saver, foos.pers, names), EReadError);
}

TEST(ObjectSaver, UnknownFormatsAndNilObjectsAreRefused) {
    TFoo foo;
    TObjectSaver saver;
    saver.Format = sofUnknown;
    TPersistent* objs[] = {&foo};
    EXPECT_THROW(Save(saver, objs), EFitWriterError);
    TStringStream s("TPF0");
    EXPECT_THROW(saver.LoadObjects(objs, &s), EFitReaderError);
    saver.Format = sofBinary;
    TPersistent* withNil[] = {nullptr};
    EXPECT_THROW(Save(saver, withNil), EFitWriterError);
}

// ---------------------------------------------------------------------------------------------
// Loading

TEST(ObjectSaver, NilEntriesSkipTheirObjects) {
    Foos src{1, 2, 3}, dst{0, 0, 0};
    TObjectSaver saver;
    std::string names[] = {"A", "B", "C"};
    std::string data = Save(saver, src.pers, names);
    Listener l;
    l.Attach(saver);
    dst.pers[1] = nullptr;
    TStringStream s(data);
    saver.LoadObjects(dst.pers, &s);
    EXPECT_EQ(dst.Widths(), (std::vector<int32_t>{1, 0, 3}));
    EXPECT_EQ(l.log, (std::vector<std::string>{"BeforeCreateReader", "AfterCreateReader",
                                               "BeforeRead obj read", "AfterRead obj A",
                                               "BeforeRead nil skip", "AfterRead nil B",
                                               "BeforeRead obj read", "AfterRead obj C"}));

    // A hook can skip an object too; the saver's IgnoreErrors reaches the reader it makes.
    l.vetoRead = true;
    saver.IgnoreErrors = true;
    Foos vetoed{0};
    TStringStream again(data);
    saver.LoadObjects(vetoed.pers, &again);
    EXPECT_EQ(vetoed.Widths(), std::vector<int32_t>{0});
    EXPECT_EQ(l.log.at(9), "AfterCreateReader ignoring");
}

TEST(ObjectSaver, SafeLoadAnswersFalseWithoutAMessage) {
    TempDir dir;
    DialogRecorder dialogs;
    TFoo foo;
    foo.Caption = "kept";
    TPersistent* objs[] = {&foo};
    TObjectSaver saver;
    EXPECT_FALSE(saver.SafeLoadObjects(objs, dir.File("missing.stx")));
    std::ofstream(dir.File("damaged.sbn"), std::ios::binary) << "TPF0\x04TFoo\x00\x05Wid";
    EXPECT_FALSE(saver.SafeLoadObjects(objs, dir.File("damaged.sbn")));
    EXPECT_TRUE(dialogs.texts.empty());
    EXPECT_EQ(foo.Caption, "kept");
}

TEST(ObjectSaver, AFailedFileSaveLeavesTheOldFile) {
    TempDir dir;
    std::string file = dir.File("ExpData.spc");
    std::ofstream(file, std::ios::binary) << "old settings";
    TFoo a, b;
    TPersistent* objs[] = {&a, &b};
    TObjectSaver saver;
    struct Thrower : TObject {
        void Before(TObjectSaver*, TPersistent*, const std::string& name, TFitWriter*, bool&) {
            if (name == "second") throw EWriteError("disk full");
        }
    } thrower;
    saver.OnBeforeWriteObject = TSaverBeforeWriteEvent::Of<&Thrower::Before>(&thrower);
    std::string names[] = {"first", "second"};
    EXPECT_THROW(saver.SaveObjects(objs, names, file), EWriteError);
    EXPECT_EQ(ReadAll(file), "old settings");
    EXPECT_EQ(dir.Entries().size(), 1u);
}

// ---------------------------------------------------------------------------------------------
// TPropSaver

TEST(PropSaver, SettersCopyTheLists) {
    TStringList list;
    list.Add("A.B");
    TPropSaver saver;
    saver.SetStoredProps(&list);
    saver.SetIgnoredProps(&list);
    list.Clear();
    EXPECT_EQ(saver.StoredProps()->Count(), 1);
    EXPECT_EQ(saver.IgnoredProps()->Text(), "A.B\r\n");
}
