#include <QApplication>
#include <chrono>
#include <iostream>

#include "platform/core/background.h"
#include "platform/core/standardstreams.h"
#include "platform/ui/useraction.h"

/// Prints how many nanoseconds one yield takes, inside an action, while nothing waits.
int main(int argc, char** argv) {
  orvelin::secureStandardStreams();
  const QApplication application(argc, argv);
  constexpr int calls = 50'000'000;
  orvelin::installBackgroundTask(orvelin::letDesktopIn);
  orvelin::performAction([] {
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    for (int i = 0; i < calls; ++i) orvelin::RuntimeBackgroundTask();
    const std::chrono::duration<double, std::nano> taken = Clock::now() - begin;
    std::cout << taken.count() / calls << "\n";
  });
}
