"""Arithmetic with colours of red, green and blue, 0 to 255."""


def rgb(css):
    """Of a computed colour such as "rgb(1, 2, 3)"."""
    return tuple(round(float(value)) for value in css[css.index("(") + 1:-1].split(",")[:3])


def luminance(colour):
    """Relative luminance of an sRGB colour, 0 to 1."""
    linear = [v / 12.92 if v <= 0.04045 else ((v + 0.055) / 1.055) ** 2.4
              for v in (sample / 255 for sample in colour)]
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]


def contrast(one, other):
    darker, lighter = sorted((luminance(one), luminance(other)))
    return (lighter + 0.05) / (darker + 0.05)
