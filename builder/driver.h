#pragma once

#include "builder/state.h"

namespace orvelin {

/// Builds the DigiFilm of `state.inFol` inside `state.outFol`, in one pass, and answers whether it
/// ran: without both folders nothing happens. Nothing that is there is deleted. `state.outFol` is
/// the new DIGIFILM folder afterwards, so that a build made at once again lies inside this one.
bool buildDigiFilm(BuildState& state);

}  // namespace orvelin
