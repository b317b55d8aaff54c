// The string table by number and language modules.
