// host PLUGIN: loads the plug-in, lets threads use it, and unloads it while a thread that used it still runs: what the
// library does at the end of a thread must still be there. Then lets processes end while threads use the library and
// messages are held. Ends with 0 if nothing crashed.

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <future>
#include <thread>

namespace {

template <class F>
F* find(void* plugin, const char* name) {
    void* const found = plugin == nullptr ? nullptr : dlsym(plugin, name);
    if (found == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        std::exit(1);
    }
    return reinterpret_cast<F*>(found);
}

bool loadAndUnload(const char* path) {
    void* const plugin = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    auto* const work = find<bool(bool)>(plugin, "kxWork");
    std::promise<bool> worked;
    std::promise<void> unloaded;
    std::thread thread([&] {
        worked.set_value(work(false));
        unloaded.get_future().wait();
    });
    const bool isRight = worked.get_future().get() && work(false);
    dlclose(plugin);
    unloaded.set_value();
    thread.join();
    return isRight;
}

/** Returns whether a process ends as it should while messages are held and threads work. */
bool endAtWork(const char* path) {
    const pid_t child = fork();
    if (child == 0) {
        void* const plugin = dlopen(path, RTLD_NOW | RTLD_LOCAL);
        find<bool(bool)>(plugin, "kxWork")(true);
        for (int i = 0; i < 3; ++i) {
            find<void()>(plugin, "kxWorkOn")();
        }
        usleep(2000);
        std::exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    if (status != 0) {
        std::fprintf(stderr, "a process ended with status %d\n", status);
    }
    return status == 0;
}

} // namespace

int main(int argc, char** argv) {
    bool isRight = argc == 2;
    for (int i = 0; isRight && i < 50; ++i) {
        isRight = endAtWork(argv[1]);
    }
    for (int i = 0; isRight && i < 3; ++i) {
        isRight = loadAndUnload(argv[1]);
    }
    return isRight ? 0 : 1;
}
