#pragma once

#include "builder/buildstate.h"

namespace orvelin {

/// Builds the DigiFilm of `state.inFol` in `state.outFol`. Sets `state.outFol` to the new folder
/// DIGIFILM: a second build nests, on purpose. Deletes nothing except the temporary files of a
/// killed build. Returns when everything is on the device; throws NilObjectException if the device
/// fails, or a nil is used. Returns false and does nothing if a folder is nil.
bool buildDigiFilm(BuildState& state);

}  // namespace orvelin
