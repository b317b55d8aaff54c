// Unit SpcObjectOps: the editor's one view of the table of functions through which it works on
// the objects it edits. The table may come from another module than the editor, so nothing in
// the editor calls the objects' classes directly; every call goes through here, typed.
#pragma once

#include "specification/SpcMng.h"

#include <string>

namespace zelvane {

class TSpcObjectOps {
public:
    TSpcObjectOps() = default;
    explicit TSpcObjectOps(TInitData* table) : t_(table) {}

    bool Assigned() const { return t_ != nullptr; }
    TInitData* Table() const { return t_; }

    TObjectStorageFormat LoadSpc(rtl::TPersistent*& obj, const std::string& fileName,
                                 bool showErrors) const {
        return t_->LoadSpc(obj, fileName, false, showErrors);
    }
    void SaveSpc(rtl::TPersistent* obj, const std::string& fileName,
                 TObjectStorageFormat format) const {
        t_->SaveSpc(obj, fileName, format);
    }
    rtl::TPersistent* CreateSpc(rtl::TClass cls) const {
        return static_cast<rtl::TPersistent*>(t_->CreateSpc(cls));
    }
    rtl::TPersistent* RecreateSpc(rtl::TPersistent*& obj) const { return t_->RecreateSpc(obj); }
    void FreeSpc(rtl::TPersistent*& obj) const { t_->FreeSpc(obj); }

    rtl::TCollectionItem* CollectionAdd(rtl::TCollection* c) const { return t_->CollectionAdd(c); }
    void CollectionDelete(rtl::TCollection* c, int index) const { t_->CollectionDelete(c, index); }
    void CollectionClear(rtl::TCollection* c) const { t_->CollectionClear(c); }
    int CollectionNextID(rtl::TCollection* c) const { return t_->CollectionNextID(c); }
    std::string CollectionPropName(rtl::TCollection* c) const { return t_->CollectionPropName(c); }
    rtl::TCollectionItem* CollectionGetItem(rtl::TCollection* c, int index) const {
        return t_->CollectionGetItem(c, index);
    }
    int CollectionCount(rtl::TCollection* c) const { return t_->CollectionCount(c); }
    rtl::TCollection* ItemCollection(rtl::TCollectionItem* item) const {
        return t_->ItemCollection(item);
    }
    int ItemGetIndex(rtl::TCollectionItem* item) const { return t_->ItemGetIndex(item); }
    void ItemSetIndex(rtl::TCollectionItem* item, int index) const { t_->ItemSetIndex(item, index); }

    // Copies the object's properties into the other by a binary stream.
    void CopyProps(rtl::TObject* from, rtl::TObject* to) const {
        std::string text;
        rtl::TObject* source[] = {from};
        rtl::TObject* target[] = {to};
        t_->GetProps(TObjectArray(source), text, osfBin);
        t_->SetProps(TObjectArray(target), text, osfBin);
    }

    rtl::PTypeInfo ClassInfo(rtl::TObject* obj) const { return t_->ObjectClassInfo(obj); }
    std::string ClassName(rtl::TObject* obj) const { return t_->ObjectClassName(obj); }
    std::string ComponentName(rtl::TComponent* c) const { return t_->ComponentName(c); }
    rtl::TClass ClassType(rtl::TObject* obj) const { return t_->ObjectClassType(obj); }
    TBaseClassIdent BaseClass(rtl::TObject* obj) const { return t_->ObjectBaseClass(obj); }
    void SetPropByPtr(rtl::TObject* obj, rtl::PPropInfo prop, void* value) const {
        t_->SetPropByPtr(obj, prop, value);
    }
    void GetPropAsPtr(rtl::TObject* obj, rtl::PPropInfo prop, void*& value) const {
        t_->GetPropAsPtr(obj, prop, value);
    }
    rtl::TClass WrapperItemClass() const { return t_->WrapperItemClass(); }
    bool IsWrapperItem(rtl::TObject* obj) const {
        return obj && t_->ObjectIsClass(obj, t_->WrapperItemClass());
    }

private:
    TInitData* t_ = nullptr;
};

} // namespace zelvane
