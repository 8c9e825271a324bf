#pragma once

#include "builder/state.h"

namespace orvelin {

/// Builds the DigiFilm of `state.inFol` inside `state.outFol`, in one pass. False, without doing
/// anything, when one of the folders is nil. Deletes nothing but what a killed build left
/// unfinished. Afterwards `state.outFol` is the new DIGIFILM folder, so that the next build goes
/// inside it.
bool buildDigiFilm(BuildState& state);

}  // namespace orvelin
