#include <atomic>
#include <thread>

#include "host/services.h"
#include "refhost/refhost.h"

namespace {

std::atomic<std::thread::id> g_main_thread;

}  // namespace

void refhost::Initialize() { g_main_thread = std::this_thread::get_id(); }

bool YQ_IsOnMainThread() { return g_main_thread == std::this_thread::get_id(); }
