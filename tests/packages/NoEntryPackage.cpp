// A shared library for the tests that is no package: it exports no Register entry.
extern "C" int NotAnEntryPoint() {
    return 42;
}
