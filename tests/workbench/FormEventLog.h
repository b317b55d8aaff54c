// A form notifier that writes down what a form editor tells it, in the order it was told:
// "activated", "saving", "renamed Old New", "modified", "destroyed".
#pragma once

#include "toolsapi/ToolsAPI.h"

#include <string>
#include <vector>

namespace testfiles {

struct TFormEventLog : ToolsAPI::TNotifierObject, virtual ToolsAPI::IOTAFormNotifier {
    rtl::HRESULT QueryInterface(const rtl::TGUID& iid, void** obj) override {
        return ToolsAPI::QueryInterfaces<ToolsAPI::IOTAFormNotifier>(this, iid, obj);
    }
    void FormActivated() override { events.push_back("activated"); }
    void FormSaving() override { events.push_back("saving"); }
    void ComponentRenamed(ToolsAPI::TOTAHandle handle, const std::string& oldName,
                          const std::string& newName) override {
        renamed = handle;
        events.push_back("renamed " + oldName + " " + newName);
    }
    void Modified() override { events.push_back("modified"); }
    void Destroyed() override { events.push_back("destroyed"); }

    // The events of one kind ("renamed ..." for "renamed").
    std::vector<std::string> Of(const std::string& kind) const {
        std::vector<std::string> r;
        for (const auto& e : events)
            if (e.compare(0, kind.size(), kind) == 0) r.push_back(e);
        return r;
    }

    std::vector<std::string> events;
    ToolsAPI::TOTAHandle renamed = nullptr;
};

} // namespace testfiles
