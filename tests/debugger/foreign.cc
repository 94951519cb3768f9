// A host's own types with the names of ours, and other members: GDB must show
// them as if there were no printers.
struct Text {
  const char* first;
};

struct IdentObj {
  unsigned int length;
  Text data;
};

struct _PUBLICKEYSTRUC {
  unsigned char type;
};

IdentObj bytes = {2, {"ab"}};
_PUBLICKEYSTRUC blob = {7};

extern "C" void Stop() {}

int main() { Stop(); }
