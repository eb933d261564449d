#pragma once

#include "iconfamily/BitmapImageRep.h"

#include <vector>

namespace quilo {

// A picture: one or more representations of the same image, as a picture
// file or an icon family gives them.
class Image {
public:
    Image() = default;
    Image(double width, double height) : width_(width), height_(height) {}

    double width() const { return width_; }
    double height() const { return height_; }
    void setSize(double width, double height)
    {
        width_ = width;
        height_ = height;
    }

    const std::vector<BitmapImageRep>& representations() const { return representations_; }
    void addRepresentation(BitmapImageRep rep) { representations_.push_back(std::move(rep)); }

private:
    double width_ = 0;
    double height_ = 0;
    std::vector<BitmapImageRep> representations_;
};

} // namespace quilo
