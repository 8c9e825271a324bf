#include "platform/ui/useraction.h"

#include <exception>
#include <new>
#include <string>

#include "platform/core/failure.h"
#include "platform/ui/dialogs.h"
#include "platform/ui/runtime.h"

namespace orvelin {

namespace {

void quitAfter(const std::string& failure, const std::string& advice = "") {
  report(failure);
  std::string text = "Orvelin n’a pas pu continuer et va se fermer.\r\r" + failure;
  if (!advice.empty()) text += "\r\r" + advice;
  MsgBox(text +
         "\r\rOrvelin n’efface pas ce qui est déjà écrit, et ne touche à rien hors du dossier "
         "«\u00A0DIGIFILM\u00A0».");
  Runtime::current().quit(1);
}

}  // namespace

void performAction(const std::function<void()>& action) {
  Runtime::current().perform([&] { handleFailures(action); });
}

void handleFailures(const std::function<void()>& step) try {
  step();
} catch (const NilObjectException& failure) {
  quitAfter(failure.what(), failure.advice());
} catch (const std::bad_alloc&) {
  quitAfter("Mémoire insuffisante.");
} catch (const std::exception& failure) {
  quitAfter(failure.what());
}

}  // namespace orvelin
