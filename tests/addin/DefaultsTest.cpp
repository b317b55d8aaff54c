// Defaults are written twice, in a class's constructor and in its published properties'
// declarations: a fresh instance of every class the add-in and its libraries describe holds
// what its declarations say.
#include "host/ExpMng.h"
#include "rtl/TypInfo.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace zelvane;

namespace {

TEST(Defaults, AFreshInstanceOfEveryClassHoldsEveryDeclaredDefault) {
    InitExpMngUnit();
    int classes = 0, checked = 0;
    for (rtl::TClass cls : rtl::DescribedClasses()) {
        std::vector<rtl::PPropInfo> declared;
        for (rtl::PPropInfo p : rtl::GetPropInfos(cls))
            if (p->Default != rtl::NoDefault && p->GetProc) declared.push_back(p);
        if (declared.empty() || !cls->Create) continue;
        SCOPED_TRACE(cls->Name);
        std::unique_ptr<rtl::TObject> fresh(rtl::CreateInstance(cls));
        for (rtl::PPropInfo p : declared) {
            EXPECT_EQ(rtl::GetOrdProp(fresh.get(), p), p->Default) << p->Name;
            ++checked;
        }
        ++classes;
    }
    // The settings classes of the manager and of the experts, the font and the components.
    EXPECT_GE(classes, 15);
    EXPECT_GE(checked, 45);
    DoneExpMngUnit();
}

} // namespace
