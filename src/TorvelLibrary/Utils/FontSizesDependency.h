#pragma once

namespace torvel {

// The point sizes of the type scale, for a screen 375 points wide. A host replaces any subset by deriving
// from this and inherits the defaults for the rest. Asked on the main thread, by the font cache.
class FontSizesDependency {
  public:
    virtual ~FontSizesDependency() = default;

    // The size of the style of that name, in points.
    virtual double getTitle16Size() const { return 16; }
    virtual double getSubTitle14Size() const { return 14; }
    virtual double getSmallestSize() const { return 10; }
    virtual double getHeadline24Size() const { return 24; }
    virtual double getSmall12Size() const { return 12; }
    virtual double getTitleSize() const { return 15; }
    virtual double getSubTitleSize() const { return 13; }
    virtual double getSmallSize() const { return 11; }
    virtual double getHeadingSize() const { return 18; }
    virtual double getHeading20Size() const { return 20; }
    virtual double getHeadline22Size() const { return 22; }
    virtual double getBigHeadlineSize() const { return 30; }
    virtual double getBigHeadingSize() const { return 35; }

    // Deliberately not replaceable: the Headline style keeps its size whatever the provider.
    double getHeadlineSize() const { return 22; }
};

// The default provider.
class FontSizesDependencyComponent final : public FontSizesDependency {};

}  // namespace torvel
