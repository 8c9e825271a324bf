#include <chrono>
#include <iostream>

#include "platform/core/background.h"
#include "platform/ui/runtime.h"

/// Prints how many nanoseconds a call of the background task takes during an action, with no events
/// pending.
int main() {
  orvelin::Runtime runtime;
  runtime.perform([] {
    constexpr int calls = 50'000'000;
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    for (int i = 0; i < calls; ++i) orvelin::RuntimeBackgroundTask();
    const std::chrono::duration<double, std::nano> taken = Clock::now() - begin;
    std::cout << taken.count() / calls << "\n";
  });
}
