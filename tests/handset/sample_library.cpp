// A library with one entry point: what LoadLibraryW finds as a file.
// Its answer tells that the call reached it.
extern "C" __attribute__((visibility("default"))) int Answer() {
  return 42;
}
