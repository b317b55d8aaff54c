// A machine-state snapshot: what the CPU window shows of a stopped program, read from a text
// file.
//
// The file is line-based; blanks around fields don't matter, and a line that starts with "#"
// or ";" is a comment. Sections start with a line "[name]":
//
//   [code]        One instruction a line: its address (hexadecimal), its bytes (hexadecimal, two
//                 digits each, written together), and its disassembly as the rest of the line:
//                     00403A10  55              push ebp
//                 Instructions are listed by rising address and don't overlap; their bytes are
//                 also memory. Two more kinds of line name an instruction's address:
//                     label  00403A10  Main.TMainForm.OkButtonClick:
//                     source 00403A10  Main.pas.31: begin
//                 the procedure that starts there, and the source line whose code starts there.
//   [registers]   "NAME = value" in hexadecimal, for EAX EBX ECX EDX ESI EDI EBP ESP EIP EFL
//                 and CS DS SS ES FS GS; a "*" after the value marks a register that the last
//                 step changed. Registers not listed are 0. The flags are the bits of EFL.
//   [memory]      Bytes of memory: an address, then up to 32 hexadecimal bytes separated by
//                 blanks. The stack is memory like any other.
//   [views]       Where the panes stand at the start: "DisassemblerView = address",
//                 "DumpView = address", "StackView = address". By default the disassembly
//                 stands at EIP, the dump at the first memory that is not code, the stack at ESP.
//
// Anything else raises ESnapshotError with the line number and what is wrong.
#pragma once

#include "rtl/SysUtils.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace workbench::cpu {

using rtl::Exception;

RTL_EXCEPTION(ESnapshotError, Exception)

struct TInstruction {
    uint32_t Address = 0;
    std::vector<uint8_t> Bytes;
    std::string Text;   // "push ebp"
    std::string Label;  // the procedure that starts here, empty if none
    std::string Source; // the source line whose code starts here, empty if none
    uint32_t End() const { return Address + static_cast<uint32_t>(Bytes.size()); }
};

// The registers in the order of the CPU window's register pane.
inline constexpr const char* RegisterNames[16] = {"EAX", "EBX", "ECX", "EDX", "ESI", "EDI",
                                                  "EBP", "ESP", "EIP", "EFL", "CS",  "DS",
                                                  "SS",  "ES",  "FS",  "GS"};
// The hexadecimal digits a register is shown with: 8 for the general ones, 4 for segments.
int RegisterWidth(int index);

// The flags of EFL in the order of the flags pane: name, the bit, and how many bits.
struct TFlagBits {
    const char* Name;
    const char* Short;
    int Bit;
    int Width;
};
inline constexpr TFlagBits FlagBits[17] = {{"Carry", "CF", 0, 1},
                                           {"Parity", "PF", 2, 1},
                                           {"AuxCarry", "AF", 4, 1},
                                           {"Zero", "ZF", 6, 1},
                                           {"Sign", "SF", 7, 1},
                                           {"Trap", "TF", 8, 1},
                                           {"Interrupt", "IF", 9, 1},
                                           {"Direction", "DF", 10, 1},
                                           {"Overflow", "OF", 11, 1},
                                           {"IOPL", "IO", 12, 2},
                                           {"NestedTask", "NF", 14, 1},
                                           {"Resume", "RF", 16, 1},
                                           {"V86Mode", "VM", 17, 1},
                                           {"Alignment", "AC", 18, 1},
                                           {"VirtualInterruptFlag", "VF", 19, 1},
                                           {"VirtualInterruptPending", "VP", 20, 1},
                                           {"ID", "ID", 21, 1}};

class TMachineSnapshot {
public:
    // Reads the text of a snapshot; fileName names it in errors.
    static TMachineSnapshot Parse(std::string_view text, const std::string& fileName = "snapshot");
    static TMachineSnapshot Load(const std::string& fileName);

    const std::vector<TInstruction>& Code() const { return code_; }
    // The instruction that holds the byte at address, or nullptr.
    const TInstruction* InstructionAt(uint32_t address) const;
    // The index in Code() of that instruction, or -1.
    int InstructionIndex(uint32_t address) const;

    uint32_t Register(int index) const { return registers_[index]; }
    // The register of that name (as in RegisterNames, any case); raises for another name.
    uint32_t Register(std::string_view name) const;
    bool Changed(int index) const { return changed_[index]; }
    uint32_t Flag(int index) const;

    // The byte at address, or empty where the snapshot holds no memory.
    std::optional<uint8_t> Byte(uint32_t address) const;
    // The little-endian double word at address, or empty unless all four bytes are known.
    std::optional<uint32_t> DWord(uint32_t address) const;
    // The ranges of known memory: start and bytes.
    const std::map<uint32_t, std::vector<uint8_t>>& Memory() const { return memory_; }
    // The known range that holds address: its first and one past its last address.
    std::optional<std::pair<uint32_t, uint32_t>> RangeOf(uint32_t address) const;

    uint32_t DisassemblyStart() const { return disasmStart_; }
    uint32_t DumpStart() const { return dumpStart_; }
    uint32_t StackStart() const { return stackStart_; }

private:
    void AddMemory(uint32_t address, const std::vector<uint8_t>& bytes, const std::string& where);

    std::vector<TInstruction> code_;
    uint32_t registers_[16] = {};
    bool changed_[16] = {};
    std::map<uint32_t, std::vector<uint8_t>> memory_;
    uint32_t disasmStart_ = 0, dumpStart_ = 0, stackStart_ = 0;
};

} // namespace workbench::cpu
