#pragma once

#include <string>
#include <string_view>

namespace orvelin {

/// Returns in French why libvips can't make the right photograph of a TIFF file; empty if it can,
/// or if the file can't be parsed.
std::string whyNoPhotograph(std::string_view tiff);

/// How many samples of a pixel are neither its colour nor its transparency, such as the selections
/// that an editor keeps. They are the last ones.
int countSpareSamples(std::string_view tiff);

}  // namespace orvelin
