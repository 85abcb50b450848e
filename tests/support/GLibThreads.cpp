// SPDX-License-Identifier: Apache-2.0
// Annotates for ThreadSanitizer the synchronisation that GLib guarantees for sources.
//
// Debian's GLib is not instrumented and its locks are not pthread mutexes. ThreadSanitizer
// therefore cannot see that data written to a source before it is attached is visible to callbacks
// on the context's thread, nor that finalize comes last. Suppressions would have to name our
// callbacks and would hide everything called by them. Instead, the calls that pass a source between
// threads are wrapped and annotated.
#if defined(__SANITIZE_THREAD__)

#include <map>
#include <memory>
#include <mutex>

#include <dlfcn.h>
#include <glib.h>
#include <sanitizer/tsan_interface.h>

namespace {

struct Functions {
    GSourceFuncs wrapped;  // first, so that a source's table points here
    GSourceFuncs original;
};

const GSourceFuncs& originalOf(GSource* source) {
    return reinterpret_cast<const Functions*>(source->source_funcs)->original;
}

/// During its lifetime a thread has acquired the source that others have released.
class Handover {
public:
    explicit Handover(GSource* source) : source_(source) { __tsan_acquire(source_); }
    ~Handover() { __tsan_release(source_); }
    Handover(const Handover&) = delete;
    Handover& operator=(const Handover&) = delete;

private:
    GSource* source_;
};

gboolean prepare(GSource* source, gint* timeout) {
    const Handover handover(source);
    return originalOf(source).prepare(source, timeout);
}

gboolean check(GSource* source) {
    const Handover handover(source);
    return originalOf(source).check(source);
}

gboolean dispatch(GSource* source, GSourceFunc callback, gpointer data) {
    const Handover handover(source);
    return originalOf(source).dispatch(source, callback, data);
}

void finalize(GSource* source) {
    const Handover handover(source);
    originalOf(source).finalize(source);
}

GSourceFuncs* wrap(GSourceFuncs* functions) {
    static std::mutex mutex;
    static std::map<GSourceFuncs*, std::unique_ptr<Functions>> tables;
    const std::lock_guard<std::mutex> lock(mutex);
    std::unique_ptr<Functions>& table = tables[functions];
    if (table == nullptr) {
        table = std::make_unique<Functions>(
            Functions{{prepare, check, dispatch, finalize, nullptr, nullptr}, *functions});
    }
    return &table->wrapped;
}

template <class Function>
Function* next(Function* /*type*/, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

GSource* g_source_new(GSourceFuncs* functions, guint size) {
    static const auto original = next(g_source_new, "g_source_new");
    return original(wrap(functions), size);
}

guint g_source_attach(GSource* source, GMainContext* context) {
    static const auto original = next(g_source_attach, "g_source_attach");
    __tsan_release(source);
    return original(source, context);
}

void g_source_unref(GSource* source) {
    static const auto original = next(g_source_unref, "g_source_unref");
    __tsan_release(source);
    original(source);
}

}  // extern "C"

#endif
