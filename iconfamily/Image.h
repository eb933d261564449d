#pragma once

#include "iconfamily/BitmapImageRep.h"

#include <vector>

namespace quilo {

// A picture: one or more representations of the same image, as a picture
// file or an icon family gives them, and its size in points.
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

    // The representation to draw: the first one.
    const BitmapImageRep* bestRepresentation() const
    {
        return representations_.empty() ? nullptr : &representations_.front();
    }

    // The pixel count of a bitmap picture as stored. A large picture is
    // decoded at a reduced scale when only a thumbnail is wanted, so the best
    // representation may hold fewer pixels than this. Zero for a picture that
    // is not a bitmap (a vector drawing), which is measured in points.
    int pixelsWide() const { return pixelsWide_; }
    int pixelsHigh() const { return pixelsHigh_; }
    void setPixelSize(int pixelsWide, int pixelsHigh)
    {
        pixelsWide_ = pixelsWide;
        pixelsHigh_ = pixelsHigh;
    }

private:
    double width_ = 0;
    double height_ = 0;
    int pixelsWide_ = 0;
    int pixelsHigh_ = 0;
    std::vector<BitmapImageRep> representations_;
};

} // namespace quilo
