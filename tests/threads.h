// A thread of its own, so that the state of vector math is the initial one.
#pragma once

#include <thread>

namespace kef_test {

template <class Body> void in_fresh_thread(Body body) { std::thread(body).join(); }

}  // namespace kef_test
