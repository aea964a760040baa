// load-time: prints how long it takes to load a library into a program that has the host library.
#include <dlfcn.h>

#include <chrono>
#include <cstdio>

#include "host/kex/type/Introspection.h"
#include "host/kex/type/KexType.h"

namespace {

/// Listens, as psu-agent does while it loads the plug-in, so that types declare their schemas.
class Listener final : public Kex::IntrospectionTarget {
 public:
  void handleNameSpace(Kex::Name const&) override {}
  void handleType(Kex::KexType&, Kex::KexType*) override {}
  void handleAttr(Kex::KexAttr&) override {}
  void handleAttrContextExit() override {}
  void handleScopeExit() override {}
};

}  // namespace

int main(int argc, char** argv) {
  using std::chrono::steady_clock;
  if (argc != 2) {
    std::fputs("usage: load-time FILE\n", stderr);
    return 2;
  }
  Listener listener;
  Kex::IntrospectionReactor::global().targetIs(&listener);
  auto const start = steady_clock::now();
  void* const library = ::dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  auto const end = steady_clock::now();
  Kex::IntrospectionReactor::global().targetIs(nullptr);
  if (library == nullptr) {
    std::fprintf(stderr, "load-time: %s\n", ::dlerror());
    return 1;
  }
  std::printf("%.0f\n", std::chrono::duration<double, std::nano>(end - start).count());
  return 0;
}
