// Stand-in for the library that the suite's modules use inside the mail clients.
extern "C" int __stdcall Version() {
  return 3;
}
