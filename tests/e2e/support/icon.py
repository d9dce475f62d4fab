"""What a status item's picture says to somebody who looks at it."""

# Hues in degrees, far enough apart for any shade that a bar may ask for.
_HUES = {"red": 0, "yellow": 50, "green": 135, "blue": 210}
_GRAY_BELOW = 0.25  # saturation


def colour(pixmaps):
    """The name of the colour that the largest picture is painted in, or "nothing"."""
    _, _, argb = max(pixmaps)
    painted = [tuple(argb[at + 1:at + 4]) for at in range(0, len(argb), 4)
               if argb[at] > 200 and max(argb[at + 1:at + 4]) > 100]
    if not painted:
        return "nothing"
    return name_of(*(sum(channel) / len(painted) for channel in zip(*painted)))


def name_of(red, green, blue):
    """Of a colour by its channels."""
    strongest, weakest = max(red, green, blue), min(red, green, blue)
    spread = strongest - weakest
    if spread <= _GRAY_BELOW * strongest:  # black, too, before a panel has painted itself
        return "gray"
    if strongest == red:
        hue = 60 * (green - blue) / spread
    elif strongest == green:
        hue = 120 + 60 * (blue - red) / spread
    else:
        hue = 240 + 60 * (red - green) / spread
    return min(_HUES, key=lambda name: abs((hue - _HUES[name] + 180) % 360 - 180))
