// Streams made with the codecs' own encoders, of pictures that a test knows.
#pragma once

#include <string>
#include <vector>

#include "tests/support/builder.h"
#include "tests/support/codec_streams.h"

namespace test {

/// Side of a picture's blocks.
inline constexpr int kSide = 64;

/// Sample of a band at a pixel: a picture that a lossy codec keeps well, with enough detail for its
/// streams to be of some length.
int Sample(int x, int y, int band);
/// The samples of some bands of a piece of the picture, interleaved.
std::string Samples(int left, int top, int width, int height, const std::vector<int>& bands);

/// An image of blocks of such a picture.
ImageForm BlockForm(const std::string& compression, int across, int down, int bands,
                    const std::string& representation, const std::string& mode = "B");

std::string EncodeJpeg(const std::string& samples, int width, int height, int components,
                       bool rgb = false, bool progressive = false);
/// Block `block` of a picture that is `across` blocks wide.
std::string BlockStream(int block, int across, const std::vector<int>& bands, bool rgb = false);

std::string EncodeJpeg2000(int width, int height, const std::vector<int>& bands,
                           const Jpeg2000Form& form = {});

/// Where the facsimile picture is black; black is 1 in facsimile rows.
bool IsBlack(int x, int y);
std::string EncodeFacsimile(int width, int height, bool twoDimensional);

}  // namespace test
