#include "workbench/cpu/Snapshot.h"

#include "rtl/TypInfo.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <sstream>

namespace workbench::cpu {

RTL_IMPLEMENT_CLASS(ESnapshotError)

int RegisterWidth(int index) {
    return index < 10 ? 8 : 4;
}

namespace {

std::string Trim(std::string_view s) {
    size_t a = 0, b = s.size();
    while (a < b && std::isspace(static_cast<unsigned char>(s[a])))
        ++a;
    while (b > a && std::isspace(static_cast<unsigned char>(s[b - 1])))
        --b;
    return std::string(s.substr(a, b - a));
}

std::string Upper(std::string s) {
    for (char& c : s)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

class TLineReader {
public:
    TLineReader(std::string_view text, std::string fileName)
        : text_(text), fileName_(std::move(fileName)) {}

    bool Next(std::string& line) {
        while (pos_ < text_.size()) {
            size_t end = text_.find('\n', pos_);
            if (end == std::string_view::npos) end = text_.size();
            line = Trim(text_.substr(pos_, end - pos_));
            pos_ = end + 1;
            ++number_;
            if (line.empty() || line[0] == '#' || line[0] == ';') continue;
            return true;
        }
        return false;
    }
    [[noreturn]] void Fail(const std::string& what) const {
        throw ESnapshotError(Where() + ": " + what);
    }
    int Number() const { return number_; }
    std::string Where() const { return fileName_ + "(" + std::to_string(number_) + ")"; }

    // A hexadecimal number of at most 8 digits.
    uint32_t Hex(const std::string& token, const char* what) const {
        if (token.empty() || token.size() > 8 ||
            !std::all_of(token.begin(), token.end(),
                         [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); }))
            Fail(std::string(what) + " \"" + token +
                 "\" is not a hexadecimal number of at most 8 "
                 "digits");
        return static_cast<uint32_t>(std::stoul(token, nullptr, 16));
    }
    std::vector<uint8_t> HexBytes(const std::string& token) const {
        if (token.empty() || token.size() % 2 != 0 ||
            !std::all_of(token.begin(), token.end(),
                         [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); }))
            Fail("the bytes \"" + token + "\" are not pairs of hexadecimal digits");
        std::vector<uint8_t> bytes;
        for (size_t i = 0; i < token.size(); i += 2)
            bytes.push_back(static_cast<uint8_t>(std::stoul(token.substr(i, 2), nullptr, 16)));
        return bytes;
    }

private:
    std::string_view text_;
    std::string fileName_;
    size_t pos_ = 0;
    int number_ = 0;
};

// The first blank-separated token of s, and the rest after it, trimmed.
std::pair<std::string, std::string> Split(const std::string& s) {
    size_t end = 0;
    while (end < s.size() && !std::isspace(static_cast<unsigned char>(s[end])))
        ++end;
    return {s.substr(0, end), Trim(std::string_view(s).substr(end))};
}

} // namespace

TMachineSnapshot TMachineSnapshot::Load(const std::string& fileName) {
    std::ifstream in(fileName, std::ios::binary);
    if (!in) throw rtl::EFOpenError("Cannot open file \"" + fileName + "\"");
    std::ostringstream text;
    text << in.rdbuf();
    return Parse(text.str(), fileName);
}

void TMachineSnapshot::AddMemory(uint32_t address, const std::vector<uint8_t>& bytes,
                                 const std::string& where) {
    if (bytes.empty()) return;
    // The last byte of the address space stays out, so that every range's end is an address.
    if (uint64_t(address) + bytes.size() > 0xFFFFFFFFull)
        throw ESnapshotError(where + ": memory runs past 4 GB");
    // A range that ends where this one starts grows; overlapping ones must agree.
    for (size_t i = 0; i < bytes.size(); ++i) {
        uint32_t a = address + static_cast<uint32_t>(i);
        if (auto known = Byte(a); known && *known != bytes[i])
            throw ESnapshotError(where + ": the byte at " + rtl::IntToHex(int64_t(a), 8) +
                                 " is given twice, differently");
    }
    auto it = memory_.upper_bound(address);
    if (it != memory_.begin()) {
        auto prev = std::prev(it);
        uint32_t prevEnd = prev->first + static_cast<uint32_t>(prev->second.size());
        if (prevEnd >= address) {
            uint32_t newEnd = address + static_cast<uint32_t>(bytes.size());
            if (newEnd > prevEnd)
                prev->second.insert(prev->second.end(), bytes.end() - (newEnd - prevEnd),
                                    bytes.end());
            // Join the ranges that the grown one now reaches.
            for (auto next = std::next(prev); next != memory_.end();) {
                uint32_t end = prev->first + static_cast<uint32_t>(prev->second.size());
                if (next->first > end) break;
                uint32_t nextEnd = next->first + static_cast<uint32_t>(next->second.size());
                if (nextEnd > end)
                    prev->second.insert(prev->second.end(), next->second.end() - (nextEnd - end),
                                        next->second.end());
                next = memory_.erase(next);
            }
            return;
        }
    }
    memory_[address] = bytes;
    auto self = memory_.find(address);
    for (auto next = std::next(self); next != memory_.end();) {
        uint32_t end = self->first + static_cast<uint32_t>(self->second.size());
        if (next->first > end) break;
        uint32_t nextEnd = next->first + static_cast<uint32_t>(next->second.size());
        if (nextEnd > end)
            self->second.insert(self->second.end(), next->second.end() - (nextEnd - end),
                                next->second.end());
        next = memory_.erase(next);
    }
}

TMachineSnapshot TMachineSnapshot::Parse(std::string_view text, const std::string& fileName) {
    TMachineSnapshot s;
    TLineReader reader(text, fileName);
    std::string section, line;
    struct TNote {
        uint32_t Address;
        std::string Text;
        bool IsLabel;
        int Line;
    };
    std::vector<TNote> notes;
    std::optional<uint32_t> disasm, dump, stack;
    bool registersSeen[16] = {};
    while (reader.Next(line)) {
        if (line.front() == '[') {
            if (line.back() != ']') reader.Fail("a section header lacks its \"]\"");
            section = Upper(Trim(std::string_view(line).substr(1, line.size() - 2)));
            if (section != "CODE" && section != "REGISTERS" && section != "MEMORY" &&
                section != "VIEWS")
                reader.Fail("unknown section [" + section + "]");
            continue;
        }
        if (section.empty()) reader.Fail("a line stands before the first section");
        if (section == "CODE") {
            auto [first, rest] = Split(line);
            std::string lower = first;
            for (char& c : lower)
                c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            if (lower == "label" || lower == "source") {
                auto [address, note] = Split(rest);
                if (note.empty()) reader.Fail("a " + lower + " line has no text");
                notes.push_back(
                    {reader.Hex(address, "The address"), note, lower == "label", reader.Number()});
                continue;
            }
            TInstruction ins;
            ins.Address = reader.Hex(first, "The address");
            auto [bytes, disassembly] = Split(rest);
            ins.Bytes = reader.HexBytes(bytes);
            if (ins.Bytes.size() > 15) reader.Fail("an instruction has more than 15 bytes");
            if (disassembly.empty()) reader.Fail("an instruction has no disassembly");
            if (uint64_t(ins.Address) + ins.Bytes.size() > 0xFFFFFFFFull)
                reader.Fail("an instruction runs past 4 GB");
            ins.Text = disassembly;
            if (!s.code_.empty() && ins.Address < s.code_.back().End())
                reader.Fail("the instruction at " + first + " does not follow the one before it");
            s.AddMemory(ins.Address, ins.Bytes, reader.Where());
            s.code_.push_back(std::move(ins));
        } else if (section == "REGISTERS") {
            size_t eq = line.find('=');
            if (eq == std::string::npos) reader.Fail("a register line has no \"=\"");
            std::string name = Upper(Trim(std::string_view(line).substr(0, eq)));
            std::string value = Trim(std::string_view(line).substr(eq + 1));
            bool changed = !value.empty() && value.back() == '*';
            if (changed) value = Trim(std::string_view(value).substr(0, value.size() - 1));
            int index = -1;
            for (int i = 0; i < 16; ++i)
                if (name == RegisterNames[i]) index = i;
            if (index < 0) reader.Fail("unknown register \"" + name + "\"");
            if (registersSeen[index]) reader.Fail("register " + name + " is given twice");
            registersSeen[index] = true;
            uint32_t v = reader.Hex(value, "The value");
            if (RegisterWidth(index) == 4 && v > 0xFFFF)
                reader.Fail("segment register " + name + " holds more than 16 bits");
            s.registers_[index] = v;
            s.changed_[index] = changed;
        } else if (section == "MEMORY") {
            auto [first, rest] = Split(line);
            uint32_t address = reader.Hex(first, "The address");
            std::vector<uint8_t> bytes;
            std::string remaining = rest;
            while (!remaining.empty()) {
                auto [token, after] = Split(remaining);
                if (token.size() != 2)
                    reader.Fail("a memory byte \"" + token +
                                "\" is not two "
                                "hexadecimal digits");
                auto b = reader.HexBytes(token);
                bytes.push_back(b[0]);
                remaining = after;
            }
            if (bytes.empty()) reader.Fail("a memory line has no bytes");
            if (bytes.size() > 32) reader.Fail("a memory line has more than 32 bytes");
            s.AddMemory(address, bytes, reader.Where());
        } else {
            size_t eq = line.find('=');
            if (eq == std::string::npos) reader.Fail("a view line has no \"=\"");
            std::string name = Upper(Trim(std::string_view(line).substr(0, eq)));
            uint32_t v = reader.Hex(Trim(std::string_view(line).substr(eq + 1)), "The address");
            if (name == "DISASSEMBLERVIEW")
                disasm = v;
            else if (name == "DUMPVIEW")
                dump = v;
            else if (name == "STACKVIEW")
                stack = v;
            else
                reader.Fail("unknown view \"" + name + "\"");
        }
    }
    for (const TNote& n : notes) {
        int i = s.InstructionIndex(n.Address);
        if (i < 0 || s.code_[size_t(i)].Address != n.Address)
            throw ESnapshotError(fileName + "(" + std::to_string(n.Line) + "): no instruction " +
                                 "starts at " + rtl::IntToHex(int64_t(n.Address), 8));
        std::string& target = n.IsLabel ? s.code_[size_t(i)].Label : s.code_[size_t(i)].Source;
        target = target.empty() ? n.Text : target + "\r\n" + n.Text;
    }
    s.disasmStart_ = disasm.value_or(s.registers_[8]);
    s.stackStart_ = stack.value_or(s.registers_[7]);
    if (dump) {
        s.dumpStart_ = *dump;
    } else {
        s.dumpStart_ = s.memory_.empty() ? 0 : s.memory_.begin()->first;
        for (const auto& [start, bytes] : s.memory_)
            if (!s.InstructionAt(start)) {
                s.dumpStart_ = start;
                break;
            }
    }
    return s;
}

int TMachineSnapshot::InstructionIndex(uint32_t address) const {
    auto it = std::upper_bound(code_.begin(), code_.end(), address,
                               [](uint32_t a, const TInstruction& i) { return a < i.Address; });
    if (it == code_.begin()) return -1;
    --it;
    return address < it->End() ? static_cast<int>(it - code_.begin()) : -1;
}

const TInstruction* TMachineSnapshot::InstructionAt(uint32_t address) const {
    int i = InstructionIndex(address);
    return i < 0 ? nullptr : &code_[size_t(i)];
}

uint32_t TMachineSnapshot::Register(std::string_view name) const {
    std::string upper = Upper(std::string(name));
    for (int i = 0; i < 16; ++i)
        if (upper == RegisterNames[i]) return registers_[i];
    throw ESnapshotError("unknown register \"" + std::string(name) + "\"");
}

uint32_t TMachineSnapshot::Flag(int index) const {
    const TFlagBits& f = FlagBits[index];
    return (registers_[9] >> f.Bit) & ((1u << f.Width) - 1);
}

std::optional<uint8_t> TMachineSnapshot::Byte(uint32_t address) const {
    auto it = memory_.upper_bound(address);
    if (it == memory_.begin()) return std::nullopt;
    --it;
    uint64_t offset = uint64_t(address) - it->first;
    if (offset >= it->second.size()) return std::nullopt;
    return it->second[size_t(offset)];
}

std::optional<uint32_t> TMachineSnapshot::DWord(uint32_t address) const {
    uint32_t v = 0;
    for (uint32_t i = 0; i < 4; ++i) {
        if (address + i < address) return std::nullopt; // past 4 GB
        auto b = Byte(address + i);
        if (!b) return std::nullopt;
        v |= uint32_t(*b) << (8 * i);
    }
    return v;
}

std::optional<std::pair<uint32_t, uint32_t>> TMachineSnapshot::RangeOf(uint32_t address) const {
    auto it = memory_.upper_bound(address);
    if (it == memory_.begin()) return std::nullopt;
    --it;
    uint32_t end = it->first + static_cast<uint32_t>(it->second.size());
    if (address >= end) return std::nullopt;
    return std::make_pair(it->first, end);
}

} // namespace workbench::cpu
