// A host program that embeds libYarvBook through its installed package.
#include <yarvbook/yarvbook.h>

#include <cstdio>

int main() {
  std::printf("embedded libYarvBook %s\n", YarvBookVersion());
  return 0;
}
