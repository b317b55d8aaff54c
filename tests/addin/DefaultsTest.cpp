// Defaults are written twice, in a class's constructor and in its published properties'
// declarations: a fresh instance of each settings class, and of the runtime's classes with
// declared defaults, holds what its declarations say.
#include "experts/block/BlockMng.h"
#include "host/ExpData.h"
#include "host/ExpMng.h"
#include "host/ExpShrForm.h"
#include "rtl/Graphics.h"

#include <gtest/gtest.h>

#include <memory>

using namespace zelvane;

namespace {

TEST(Defaults, AFreshInstanceHoldsEveryDeclaredDefault) {
    InitExpMngUnit();
    const rtl::TClass classes[] = {
        TExpManagerData::StaticClass(), TEditorFormData::StaticClass(),
        TExpertInfo::StaticClass(),     TExpMenuItemData::StaticClass(),
        TFormSetting::StaticClass(),    TBlockMng::StaticClass(),
        rtl::TFont::StaticClass(),      rtl::TComponent::StaticClass(),
    };
    int checked = 0;
    for (rtl::TClass cls : classes) {
        SCOPED_TRACE(cls->Name);
        std::unique_ptr<rtl::TObject> fresh(rtl::CreateInstance(cls));
        for (rtl::PPropInfo p : rtl::GetPropInfos(cls)) {
            if (p->Default == rtl::NoDefault || !p->GetProc) continue;
            EXPECT_EQ(rtl::GetOrdProp(fresh.get(), p), p->Default) << p->Name;
            ++checked;
        }
    }
    EXPECT_GE(checked, 15);
    DoneExpMngUnit();
}

} // namespace
