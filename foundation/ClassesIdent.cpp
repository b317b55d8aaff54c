// TIdentList and TIdentIntfList.
#include "foundation/Classes.h"

#include "rtl/TypInfo.h"

namespace zelvane {

RTL_IMPLEMENT_CLASS(EIdentListError)
RTL_IMPLEMENT_CLASS(TIdentList)
RTL_IMPLEMENT_CLASS(TIdentIntfList)

const rtl::TGUID IIdentIntf::IID = rtl::TGUID::FromString("{53251D11-A916-11D4-B1D7-000000000000}");

namespace {

[[noreturn]] void RaiseIndexError(int index) {
    rtl::TList::Error(rtl::SListIndexError, index);
}

// Checks the identifier an item gives before it may join a list.
void CheckNewIdent(const std::string& ident) {
    if (!rtl::IsValidIdent(ident)) CreateException<EIdentListError>(SIdentNotAcceptable, {ident});
}

// The binary search of both lists: the index of the item of that identifier, or where it would
// go.
template <class IdentAt>
bool FindIdent(int count, const std::string& ident, int& index, IdentAt identAt) {
    int l = 0, h = count - 1;
    bool found = false;
    while (l <= h) {
        int i = (l + h) / 2;
        int c = rtl::CompareText(identAt(i), ident);
        if (c < 0) {
            l = i + 1;
        } else {
            h = i - 1;
            if (c == 0) {
                found = true;
                l = i;
            }
        }
    }
    index = l;
    return found;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// TIdentList

IIdentIntf* TIdentList::IdentOf(rtl::TObject* item) {
    void* intf = nullptr;
    if (!item || !item->GetInterface(IIdentIntf::IID, &intf) || !intf)
        CreateException<EIdentListError>(SNoIdentIntf);
    return static_cast<IIdentIntf*>(intf);
}

int TIdentList::Add(rtl::TObject* item) {
    std::string ident = IdentOf(item)->GetIdent();
    CheckNewIdent(ident);
    int index = 0;
    if (Find(ident, index)) CreateException<EIdentListError>(SIdentNotUnique, {ident});
    items_.Insert(index, item);
    return index;
}

bool TIdentList::Find(const std::string& ident, int& index) {
    return FindIdent(GetCount(), ident, index,
                     [this](int i) { return IdentOf(GetItem(i))->GetIdent(); });
}

rtl::TObject* TIdentList::GetItem(int index) const {
    return static_cast<rtl::TObject*>(items_.Get(index));
}

int TIdentList::IndexOf(rtl::TObject* item) {
    int index = 0;
    return Find(IdentOf(item)->GetIdent(), index) ? index : -1;
}

int TIdentList::Remove(rtl::TObject* item) {
    int index = IndexOf(item);
    if (index != -1) Delete(index);
    return index;
}

// ---------------------------------------------------------------------------------------------
// TIdentIntfList

TIdentIntfList::~TIdentIntfList() {
    Clear();
}

int TIdentIntfList::Add(IIdentIntf* item) {
    if (!item) CreateException<EIdentListError>(SNoIdentIntf);
    std::string ident = item->GetIdent();
    CheckNewIdent(ident);
    int index = 0;
    if (Find(ident, index)) CreateException<EIdentListError>(SIdentNotUnique, {ident});
    items_.insert(items_.begin() + index, item);
    item->_AddRef();
    return index;
}

void TIdentIntfList::Clear() {
    std::vector<IIdentIntf*> items;
    items.swap(items_);
    for (IIdentIntf* item : items)
        item->_Release();
}

void TIdentIntfList::Delete(int index) {
    if (index < 0 || index >= GetCount()) RaiseIndexError(index);
    IIdentIntf* item = items_[static_cast<size_t>(index)];
    items_.erase(items_.begin() + index);
    item->_Release();
}

bool TIdentIntfList::Find(const std::string& ident, int& index) {
    return FindIdent(GetCount(), ident, index,
                     [this](int i) { return items_[static_cast<size_t>(i)]->GetIdent(); });
}

IIdentIntf* TIdentIntfList::GetItem(int index) const {
    if (index < 0 || index >= GetCount()) RaiseIndexError(index);
    return items_[static_cast<size_t>(index)];
}

int TIdentIntfList::IndexOf(IIdentIntf* item) {
    if (!item) CreateException<EIdentListError>(SNoIdentIntf);
    int index = 0;
    return Find(item->GetIdent(), index) ? index : -1;
}

int TIdentIntfList::Remove(IIdentIntf* item) {
    IIdentIntf* removed = nullptr;
    int index;
    {
        std::lock_guard guard(lock_);
        index = IndexOf(item);
        if (index != -1) {
            // The entry is cleared before it leaves the list, as the platform's list does.
            std::swap(removed, items_[static_cast<size_t>(index)]);
            items_.erase(items_.begin() + index);
        }
    }
    // Released outside the lock: the item may go away with it.
    if (removed) removed->_Release();
    return index;
}

} // namespace zelvane
