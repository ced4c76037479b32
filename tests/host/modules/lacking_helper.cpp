// A strategy that was linked without one of its files.

namespace helping {
double levelOf(int number);
}

extern "C" __attribute__((visibility("default"))) double useHelper() { return helping::levelOf(1); }
