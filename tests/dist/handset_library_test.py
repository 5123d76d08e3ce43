# What the handset's system and the desktop demand of the file QV_RAPI.dll. Each demand is also put to a copy that is
# broken on purpose, so that none of them can pass by seeing nothing.
"""Usage: handset_library_test.py x86|ARM QV_RAPI.dll [unittest options]"""

import pathlib
import re
import sys
import unittest

import pefile

from unittest_result import write_result

MACHINES = {"x86": 0x14C, "ARM": 0x1C0}

EXPORTS = set("""
fnQV_ExportTabs fnQV_RecovTabs fnQV_ExportTables fnQV_Recover fnQV_IsNimbraK9 fnQV_IsRunSDSync fnQV_CheckMutex
fnQV_GetPDASpace fnQV_SetPDAStoreSpace fnQV_GetMailID fnQV_NotifyBLTChanged qv_ExportTabs qv_RecovTabs
""".split())

# What COREDLL.dll of the handset is known to export. A library that wants more does not load there.
COREDLL = set("""
CreateFileW ReadFile WriteFile CloseHandle DeleteFileW CopyFileW GetFileSize FindFirstFileW FindNextFileW GetLocalTime
SystemTimeToFileTime FileTimeToSystemTime CompareFileTime GetTickCount LoadLibraryW GetProcAddressW FreeLibrary
FindWindowW PostMessageW CreateSemaphoreW GetLastError GetDiskFreeSpaceExW SetSystemMemoryDivision wcstombs mbstowcs
swprintf wsprintfW malloc realloc free memcpy memmove memset memcmp strlen strstr strchr wcslen wcscpy wcsncpy wcscmp
wcsncmp wcsstr wcschr sprintf _snprintf _snwprintf printf
""".split())

# The members of CMailDBSync as MailStore.dll of an x86 handset exports them. The agent needs each of them.
MAIL_STORE = """
??0CMailDBSync@@QAE@XZ
?InitCEDB@CMailDBSync@@QAEHXZ
?CloseCEDB@CMailDBSync@@QAEHXZ
?DisConnectDB@CMailDBSync@@QAEHXZ
?Sync_GetUserInfo@CMailDBSync@@QAEJPAJ0@Z
?Sync_GetConfigInfo@CMailDBSync@@QAEJPAJ0@Z
?Sync_GetFilterInfo@CMailDBSync@@QAEJPAJ0@Z
?Sync_GetLinkManInfo@CMailDBSync@@QAEJPAJ0@Z
?Sync_GetFolderInfo@CMailDBSync@@QAEJPAJ0@Z
?Sync_GetUIDLInfo@CMailDBSync@@QAEJPAJ0@Z
?Sync_GetMailHeaderInfo@CMailDBSync@@QAEJPAJ0@Z
?Sync_GetMailAddressInfo@CMailDBSync@@QAEJPAJ0@Z
?Sync_SetUserInfo@CMailDBSync@@QAEJPAUUserList@@PAUConfigList@@PAH@Z
?Sync_SetUIDLInfo@CMailDBSync@@QAEJPAUUIDLList@@H@Z
?Sync_SetFilterInfo@CMailDBSync@@QAEJPAUFilterList@@PAULinkManList@@HH@Z
?Sync_QueryHeaderByUserId@CMailDBSync@@QAEJPAPAUHeaderList@@H@Z
?Sync_SetFolderInfo@CMailDBSync@@QAEJPAUFolderList@@HPAH@Z
?Sync_SetMailInfo@CMailDBSync@@QAEJPAUHeaderList@@PAUAddressList@@JPAD@Z
""".split()

SOURCE_TREE = str(pathlib.Path(__file__).resolve().parents[2]).encode()
# A drive alone is no path: code can look like one.
MACHINE_PATH = re.compile(re.escape(SOURCE_TREE) + rb"|/(?:home|root|usr|tmp|var|opt|mnt|srv)/|[A-Za-z]:\\[\w.-]{3}")

RELOCATION_ABSOLUTE, RELOCATION_HIGHLOW = 0, 3
SECTION_EXECUTABLE, SECTION_WRITABLE = 0x20000000, 0x80000000
FILE_RELOCS_STRIPPED, FILE_DLL = 0x0001, 0x2000


def expect(holds, problem):
    if not holds:
        raise AssertionError(problem)


def expect_equal(found, wanted, what):
    expect(found == wanted, f"{what}: {found!r} instead of {wanted!r}")


# --- The demands ---


def is_a_pe32_dll_for_its_machine(pe):
    expect_equal(pe.FILE_HEADER.Machine, MACHINES[MACHINE], "machine")
    expect_equal(pe.OPTIONAL_HEADER.Magic, 0x10B, "magic")
    expect(pe.FILE_HEADER.Characteristics & FILE_DLL, "it is not marked as a DLL")


def asks_for_nothing_newer_than_windows_ce_4_10(pe):
    header = pe.OPTIONAL_HEADER
    expect_equal(header.Subsystem, 9, "subsystem")
    expect_equal((header.MajorSubsystemVersion, header.MinorSubsystemVersion), (4, 10), "subsystem version")
    expect_equal((header.MajorOperatingSystemVersion, header.MinorOperatingSystemVersion), (4, 10), "system version")


def has_no_flags_unknown_to_the_handset(pe):
    expect_equal(pe.OPTIONAL_HEADER.DllCharacteristics, 0, "DLL characteristics")


def carries_no_time_stamp(pe):
    directories = [pe.FILE_HEADER, pe.DIRECTORY_ENTRY_EXPORT.struct]
    directories += [library.struct for library in pe.DIRECTORY_ENTRY_IMPORT]
    for directory in directories:
        expect_equal(directory.TimeDateStamp, 0, f"time stamp of {directory.name}")


def imports_from_coredll_and_the_mail_store_only(pe):
    libraries = sorted(library.dll for library in pe.DIRECTORY_ENTRY_IMPORT)
    expect_equal(libraries, [b"COREDLL.dll", b"MailStore.dll"], "imported libraries")


def imports_only_what_coredll_has(pe):
    names = set(names_imported_from(pe, b"COREDLL.dll"))
    expect(names <= COREDLL, f"imports unknown to the handset: {sorted(names - COREDLL)}")


def imports_each_member_of_the_mail_store_once(pe):
    expect_equal(sorted(names_imported_from(pe, b"MailStore.dll")), sorted(mail_store()), "imports from MailStore.dll")


def exports_the_names_that_callers_ask_for_and_no_others(pe):
    symbols = pe.DIRECTORY_ENTRY_EXPORT.symbols
    expect_equal(sorted(str(symbol.name, "ascii") for symbol in symbols), sorted(EXPORTS), "exports")


def can_be_moved_by_32_bit_relocations(pe):
    expect(not pe.FILE_HEADER.Characteristics & FILE_RELOCS_STRIPPED, "relocations are marked as stripped")
    types = {entry.type for page in pe.DIRECTORY_ENTRY_BASERELOC for entry in page.entries}
    expect(RELOCATION_HIGHLOW in types, "it has no 32-bit relocation")
    expect(types <= {RELOCATION_ABSOLUTE, RELOCATION_HIGHLOW}, f"relocation types: {sorted(types)}")


def relocates_only_addresses_in_the_image(pe):
    for rva in relocated(pe):
        expect(points_into(pe, pe.get_dword_at_rva(rva)), f"the relocated word at {rva:#x} is no address")


def relocates_every_address_in_its_data(pe):
    addresses = [rva for section in data_sections(pe) for rva in words(section)
                 if points_into(pe, pe.get_dword_at_rva(rva))]
    expect(addresses, "no address was found in its data")
    expect_equal([rva for rva in addresses if rva not in relocated(pe)], [], "addresses that stay where they are")


def relocates_every_way_to_an_import(pe):
    targets = {pe.get_dword_at_rva(rva) for rva in relocated(pe)}
    stuck = [entry.name for entry in imports(pe) if entry.address not in targets]
    expect_equal(stuck, [], "imports without a relocated reference")


def has_no_section_that_is_both_writable_and_executable(pe):
    for section in pe.sections:
        both = SECTION_WRITABLE | SECTION_EXECUTABLE
        expect(section.Characteristics & both != both, f"{section.Name} is writable and executable")


def tells_nothing_of_the_machine_that_built_it(pe):
    # Without the NULs, so that wide text is searched too.
    found = MACHINE_PATH.search(bytes(pe.__data__).replace(b"\0", b""))
    expect(found is None, f"it holds the path {found and found.group()!r}")


# --- What they look at ---


def mail_store():
    """The members of CMailDBSync on this machine: E stands for x86's convention, A for the only one that ARM has."""
    return MAIL_STORE if MACHINE == "x86" else [name.replace("@@QAE", "@@QAA") for name in MAIL_STORE]


def imports(pe):
    return [entry for library in pe.DIRECTORY_ENTRY_IMPORT for entry in library.imports]


def imports_from(pe, library_name):
    return [entry for library in pe.DIRECTORY_ENTRY_IMPORT if library.dll == library_name for entry in library.imports]


def names_imported_from(pe, library_name):
    return [entry.name.decode() if entry.name else f"#{entry.ordinal}" for entry in imports_from(pe, library_name)]


def relocated(pe):
    return {entry.rva for page in pe.DIRECTORY_ENTRY_BASERELOC for entry in page.entries
            if entry.type == RELOCATION_HIGHLOW}


def data_sections(pe):
    """The agent's own data, without the directories, which hold no addresses but relative ones."""
    directories = [directory.VirtualAddress for directory in pe.OPTIONAL_HEADER.DATA_DIRECTORY if directory.Size]
    return [section for section in pe.sections if not section.Characteristics & SECTION_EXECUTABLE
            and not any(section.contains_rva(rva) for rva in directories)]


def words(section):
    size = min(section.SizeOfRawData, section.Misc_VirtualSize)
    return range(section.VirtualAddress, section.VirtualAddress + size - 3, 4)


def points_into(pe, address):
    header = pe.OPTIONAL_HEADER
    return header.SizeOfHeaders <= address - header.ImageBase <= header.SizeOfImage


# --- How they are broken ---


def field(path, value):
    def break_it(pe):
        *parents, name = path.split(".")
        target = pe
        for parent in parents:
            target = getattr(target, parent)
        setattr(target, name, value)
    return break_it


def rename_import(library_name, position, new_name):
    """Writes over the beginning of an import's name."""
    def break_it(pe):
        pe.set_bytes_at_offset(imports_from(pe, library_name)[position].name_offset, new_name)
    return break_it


def import_twice(library_name):
    """Gives the second import the name of the first."""
    def break_it(pe):
        first, second, *_ = imports_from(pe, library_name)
        second.struct_table.AddressOfData = first.struct_table.AddressOfData
    return break_it


def rename_imported_library(old_name, new_name):
    def break_it(pe):
        library = next(each for each in pe.DIRECTORY_ENTRY_IMPORT if each.dll == old_name)
        pe.set_bytes_at_rva(library.struct.Name, new_name + b"\0")
    return break_it


def decorate_export(pe):
    pe.set_bytes_at_offset(pe.DIRECTORY_ENTRY_EXPORT.symbols[0].name_offset, b"_")


def retype_relocation(new_type, wanted):
    """Gives the first relocation for which `wanted(pe, rva)` another type."""
    def break_it(pe):
        for page in pe.DIRECTORY_ENTRY_BASERELOC:
            for entry in page.entries:
                if entry.type == RELOCATION_HIGHLOW and wanted(pe, entry.rva):
                    entry.struct.Data = new_type << 12 | entry.struct.Data & 0xFFF
                    return
        raise LookupError("there is no such relocation")
    return break_it


def is_in_data(pe, rva):
    return any(section.contains_rva(rva) for section in data_sections(pe))


def leads_to_import(pe, rva):
    return pe.get_dword_at_rva(rva) in {entry.address for entry in imports(pe)}


def misdirect_relocated_word(pe):
    pe.set_dword_at_rva(min(relocated(pe)), 0)


def make_code_writable(pe):
    pe.sections[0].Characteristics |= SECTION_WRITABLE | SECTION_EXECUTABLE


def put_into_data(text):
    def break_it(pe):
        pe.set_bytes_at_rva(data_sections(pe)[0].VirtualAddress, text)
    return break_it


DEMANDS = [
    (is_a_pe32_dll_for_its_machine, [
        field("FILE_HEADER.Machine", 0x166), field("OPTIONAL_HEADER.Magic", 0x10C),
        field("FILE_HEADER.Characteristics", 0x0102)]),
    (asks_for_nothing_newer_than_windows_ce_4_10, [
        field("OPTIONAL_HEADER.Subsystem", 2), field("OPTIONAL_HEADER.MinorSubsystemVersion", 20),
        field("OPTIONAL_HEADER.MajorOperatingSystemVersion", 5)]),
    (has_no_flags_unknown_to_the_handset, [field("OPTIONAL_HEADER.DllCharacteristics", 0x0140)]),
    (carries_no_time_stamp, [
        field("FILE_HEADER.TimeDateStamp", 1), field("DIRECTORY_ENTRY_EXPORT.struct.TimeDateStamp", 1)]),
    (imports_from_coredll_and_the_mail_store_only, [
        rename_imported_library(b"COREDLL.dll", b"KERNEL.dll"),
        rename_imported_library(b"MailStore.dll", b"mailstore.dll"),
        rename_imported_library(b"MailStore.dll", b"COREDLL.dll")]),
    (imports_only_what_coredll_has, [rename_import(b"COREDLL.dll", 0, b"X")]),
    (imports_each_member_of_the_mail_store_once, [
        rename_import(b"MailStore.dll", 0, b"?0"), rename_import(b"MailStore.dll", 5, b"_"),
        rename_import(b"MailStore.dll", -1, b"?sync"), import_twice(b"MailStore.dll")]),
    (exports_the_names_that_callers_ask_for_and_no_others, [decorate_export]),
    (can_be_moved_by_32_bit_relocations, [
        field("FILE_HEADER.Characteristics", 0x2103), retype_relocation(1, lambda pe, rva: True)]),
    (relocates_only_addresses_in_the_image, [misdirect_relocated_word]),
    (relocates_every_address_in_its_data, [retype_relocation(RELOCATION_ABSOLUTE, is_in_data)]),
    (relocates_every_way_to_an_import, [retype_relocation(RELOCATION_ABSOLUTE, leads_to_import)]),
    (has_no_section_that_is_both_writable_and_executable, [make_code_writable]),
    (tells_nothing_of_the_machine_that_built_it, [
        put_into_data(b"/usr/include/x.h"), put_into_data("C:\\x.cpp".encode("utf-16-le")),
        put_into_data(SOURCE_TREE)]),
]


class HandsetLibraryTest(unittest.TestCase):
    """Filled below with two tests for each demand."""

    def setUp(self):
        if not LIBRARY.exists():
            self.fail(f"{LIBRARY} is missing: run script/dist")
        self.contents = LIBRARY.read_bytes()


def add_tests(demand, damages):
    def holds(self):
        demand(pefile.PE(data=self.contents))

    def is_noticed_when_broken(self):
        for damage in damages:
            broken = pefile.PE(data=self.contents)
            damage(broken)
            with self.assertRaises(AssertionError):
                demand(pefile.PE(data=bytes(broken.write())))

    setattr(HandsetLibraryTest, f"test_it_{demand.__name__}", holds)
    setattr(HandsetLibraryTest, f"test_a_file_is_refused_unless_it_{demand.__name__}", is_noticed_when_broken)


if __name__ == "__main__":
    if len(sys.argv) < 3 or sys.argv[1] not in MACHINES:
        sys.exit(__doc__)
    MACHINE = sys.argv.pop(1)
    LIBRARY = pathlib.Path(sys.argv.pop(1))
    for each in DEMANDS:
        add_tests(*each)
    program = unittest.main(exit=False)
    write_result(program.result)
    sys.exit(not program.result.wasSuccessful())
