"""Draws the flat portraits of the sample address book. Needs python3-pil.

portrait(look, size) gives a Pillow image. A look is a dictionary of the words
listed in LOOKS; the same look always gives the same picture.
"""

import math

from PIL import Image, ImageChops, ImageDraw

SIDE = 1280  # Pixels of the drawing; it is reduced afterwards, which smooths edges.

# Every word of a look and what it may be. The first is taken when it is absent.
LOOKS = {
    "background": ["#9CC9D9", "any colour, or null for a transparent ground"],
    "skin": ["light", "pale", "tan", "olive", "brown", "dark"],
    "hair": [
        "short",
        "none",
        "crop",
        "side",
        "bob",
        "long",
        "curly",
        "afro",
        "bun",
        "ponytail",
        "fringe",
        "waves",
        "bald",
        "braids",
    ],
    "hair_colour": ["#4A3226", "any colour"],
    "clothes": ["#3E5C76", "any colour"],
    "neckline": ["round", "v", "shirt", "jacket"],
    "beard": [None, "full", "short", "moustache", "goatee"],
    "glasses": [None, "round", "square"],
    "cover": [None, "headscarf", "hat", "beanie", "turban", "cap"],
    "cover_colour": ["#B5485D", "any colour"],
    "mouth": ["smile", "grin", "calm"],
    "earrings": [None, "any colour"],
    "freckles": [False, True],
    "age": ["adult", "old"],
}

SKINS = {  # Face, shade, blush.
    "pale": ("#F9DCC9", "#E9BFA6", "#F2A79B"),
    "light": ("#F2C9A8", "#DDA983", "#EC9A86"),
    "tan": ("#DDA77B", "#C2895D", "#D67F66"),
    "olive": ("#CB9A6B", "#AE7D51", "#C37659"),
    "brown": ("#9C6A47", "#7F5234", "#9E5440"),
    "dark": ("#6B4630", "#523322", "#7A3F30"),
}

FACE = (0.5, 0.445, 0.172, 0.228)  # Centre and half axes, as parts of the side.


def rgb(colour):
    return tuple(int(colour[i : i + 2], 16) for i in (1, 3, 5))


def mix(one, other, share):
    """`share` of `other` in `one`."""
    pairs = zip(rgb(one), rgb(other))
    return "#" + "".join(f"{round(a + (b - a) * share):02X}" for a, b in pairs)


def darker(colour, share=0.18):
    return mix(colour, "#1B1420", share)


def lighter(colour, share=0.18):
    return mix(colour, "#FFFFFF", share)


def curve(points, closed=True, steps=24):
    """A smooth line through the points (Catmull-Rom)."""
    count = len(points)
    line = []
    for i in range(count if closed else count - 1):
        at = [points[(i + k) % count] if closed else points[min(max(i + k, 0), count - 1)] for k in (-1, 0, 1, 2)]
        for step in range(steps):
            t = step / steps
            weights = (
                (-t + 2 * t**2 - t**3) / 2,
                (2 - 5 * t**2 + 3 * t**3) / 2,
                (t + 4 * t**2 - 3 * t**3) / 2,
                (-(t**2) + t**3) / 2,
            )
            line.append(tuple(sum(w * p[axis] for w, p in zip(weights, at)) for axis in (0, 1)))
    return line if closed else line + [points[-1]]


def mirrored(points):
    """The points of one side (from the top down), then the other side's back up."""
    return points + [(1 - x, y) for x, y in reversed(points)]


def face_outline(grow=0.0, chin=0.0):
    """The head: an oval that narrows towards the chin."""
    cx, cy, a, b = FACE
    line = []
    for step in range(180):
        angle = 2 * math.pi * step / 180
        narrow = 1 - 0.13 * max(0.0, math.sin(angle)) ** 2
        line.append((cx + (a + grow) * math.cos(angle) * narrow, cy + (b + grow + chin) * math.sin(angle)))
    return line


class Drawing:
    """A square drawing whose coordinates run from 0 to 1."""

    def __init__(self):
        self.image = Image.new("RGBA", (SIDE, SIDE), (0, 0, 0, 0))

    def mask(self, *shapes):
        """Shapes are outlines (lists of points) or ellipses (cx, cy, rx, ry)."""
        mask = Image.new("L", (SIDE, SIDE), 0)
        draw = ImageDraw.Draw(mask)
        for shape in shapes:
            if isinstance(shape, tuple):
                cx, cy, rx, ry = (value * SIDE for value in shape)
                draw.ellipse((cx - rx, cy - ry, cx + rx, cy + ry), fill=255)
            else:
                draw.polygon([(x * SIDE, y * SIDE) for x, y in shape], fill=255)
        return mask

    def fill(self, mask, colour, opacity=1.0):
        if opacity < 1:
            mask = mask.point(lambda value: round(value * opacity))
        layer = Image.new("RGBA", (SIDE, SIDE), rgb(colour) + (255,))
        layer.putalpha(mask)
        self.image = Image.alpha_composite(self.image, layer)

    def shape(self, colour, *shapes, opacity=1.0):
        self.fill(self.mask(*shapes), colour, opacity)

    def line(self, colour, points, width):
        mask = Image.new("L", (SIDE, SIDE), 0)
        draw = ImageDraw.Draw(mask)
        path = [(x * SIDE, y * SIDE) for x, y in points]
        radius = width * SIDE / 2
        draw.line(path, fill=255, width=round(radius * 2), joint="curve")
        for x, y in (path[0], path[-1]):
            draw.ellipse((x - radius, y - radius, x + radius, y + radius), fill=255)
        self.fill(mask, colour)

    def ring(self, colour, shape, inner):
        self.fill(ImageChops.subtract(self.mask(shape), self.mask(inner)), colour)


def draw_background(drawing, look):
    colour = look["background"]
    if colour is None:
        return
    drawing.shape(colour, [(0, 0), (1, 0), (1, 1), (0, 1)])
    drawing.shape(lighter(colour, 0.28), (0.5, 0.5, 0.43, 0.43))


# --- Hair behind the head ------------------------------------------------------


def back_long(drawing, colour):
    side = [
        (0.5, 0.175),
        (0.385, 0.2),
        (0.305, 0.3),
        (0.29, 0.45),
        (0.285, 0.6),
        (0.26, 0.75),
        (0.27, 0.83),
        (0.36, 0.86),
    ]
    drawing.shape(darker(colour), curve(mirrored(side)))


def back_waves(drawing, colour):
    side = [
        (0.5, 0.16),
        (0.375, 0.185),
        (0.295, 0.28),
        (0.3, 0.38),
        (0.262, 0.46),
        (0.282, 0.55),
        (0.242, 0.63),
        (0.268, 0.71),
        (0.3, 0.76),
        (0.4, 0.77),
    ]
    drawing.shape(darker(colour), curve(mirrored(side)))


def back_bob(drawing, colour):
    side = [(0.5, 0.175), (0.385, 0.195), (0.305, 0.29), (0.285, 0.43), (0.275, 0.56), (0.3, 0.635), (0.4, 0.65)]
    drawing.shape(darker(colour), curve(mirrored(side)))


def back_afro(drawing, colour):
    cx, cy = 0.5, 0.36
    bumps = [
        (cx + 0.205 * math.cos(k * math.pi / 9), cy + 0.2 * math.sin(k * math.pi / 9), 0.062, 0.062) for k in range(18)
    ]
    drawing.shape(darker(colour, 0.1), (cx, cy, 0.225, 0.22), *bumps)


def back_curly(drawing, colour):
    bumps = [
        (0.5 + 0.19 * math.cos(math.pi * k / 12), 0.45 - 0.235 * math.sin(math.pi * k / 12), 0.055, 0.055)
        for k in range(-5, 18)
    ]
    drawing.shape(darker(colour), *bumps)


def back_bun(drawing, colour):
    drawing.shape(colour, (0.5, 0.165, 0.082, 0.078))
    drawing.line(darker(colour), curve([(0.445, 0.16), (0.48, 0.125), (0.53, 0.125)], closed=False), 0.008)


def back_ponytail(drawing, colour):
    drawing.shape(
        darker(colour),
        curve(
            [
                (0.58, 0.2),
                (0.68, 0.2),
                (0.745, 0.3),
                (0.752, 0.48),
                (0.775, 0.66),
                (0.735, 0.7),
                (0.685, 0.6),
                (0.668, 0.45),
                (0.63, 0.3),
            ]
        ),
    )


def back_braids(drawing, colour):
    for step in range(8):
        y = 0.5 + step * 0.047
        for x in (0.315, 0.685):
            drawing.shape(darker(colour, 0.08 if step % 2 else 0.2), (x, y, 0.034, 0.036))
    for x in (0.315, 0.685):
        drawing.shape("#E2B93B", (x, 0.86, 0.018, 0.012))


BACK_HAIR = {
    "long": back_long,
    "waves": back_waves,
    "bob": back_bob,
    "fringe": back_bob,
    "afro": back_afro,
    "curly": back_curly,
    "bun": back_bun,
    "ponytail": back_ponytail,
    "braids": back_braids,
}


# --- Hair over the forehead ------------------------------------------------------

# The part of the head below each of these lines is face; above it is hair. From
# the left ear over the forehead to the right ear.
HAIRLINES = {
    "short": [
        (0.315, 0.47),
        (0.345, 0.4),
        (0.352, 0.335),
        (0.43, 0.302),
        (0.53, 0.315),
        (0.62, 0.3),
        (0.65, 0.35),
        (0.656, 0.4),
        (0.685, 0.47),
    ],
    "crop": [(0.315, 0.43), (0.345, 0.38), (0.36, 0.315), (0.5, 0.28), (0.64, 0.315), (0.655, 0.38), (0.685, 0.43)],
    "side": [
        (0.31, 0.47),
        (0.343, 0.4),
        (0.36, 0.34),
        (0.41, 0.28),
        (0.47, 0.335),
        (0.56, 0.35),
        (0.648, 0.325),
        (0.657, 0.4),
        (0.69, 0.47),
    ],
    "bob": [
        (0.3, 0.66),
        (0.335, 0.55),
        (0.34, 0.44),
        (0.375, 0.345),
        (0.45, 0.285),
        (0.56, 0.34),
        (0.65, 0.41),
        (0.665, 0.55),
        (0.7, 0.66),
    ],
    "long": [
        (0.3, 0.68),
        (0.33, 0.55),
        (0.336, 0.44),
        (0.39, 0.36),
        (0.5, 0.252),
        (0.61, 0.36),
        (0.664, 0.44),
        (0.67, 0.55),
        (0.7, 0.68),
    ],
    "fringe": [
        (0.3, 0.66),
        (0.333, 0.55),
        (0.34, 0.44),
        (0.35, 0.37),
        (0.43, 0.355),
        (0.5, 0.36),
        (0.57, 0.355),
        (0.65, 0.37),
        (0.66, 0.44),
        (0.667, 0.55),
        (0.7, 0.66),
    ],
    "bald": [
        (0.3, 0.5),
        (0.345, 0.45),
        (0.335, 0.36),
        (0.29, 0.3),
        (0.5, 0.0),
        (0.71, 0.3),
        (0.665, 0.36),
        (0.655, 0.45),
        (0.7, 0.5),
    ],
    "bun": [
        (0.315, 0.45),
        (0.34, 0.4),
        (0.365, 0.325),
        (0.44, 0.275),
        (0.56, 0.275),
        (0.635, 0.325),
        (0.66, 0.4),
        (0.685, 0.45),
    ],
}
for name, like in {"waves": "long", "curly": "short", "afro": "crop", "ponytail": "side", "braids": "long"}.items():
    HAIRLINES[name] = HAIRLINES[like]


# How far hair stands off the head.
HAIR_GROWTH = {"crop": 0.008, "bald": 0.006, "short": 0.026, "side": 0.03, "afro": 0.05}
LOCKS = {"bob", "long", "waves", "fringe"}  # Styles that frame the face down to the jaw.


def draw_front_hair(drawing, look):
    style = look["hair"]
    if style in ("none",):
        return
    colour = look["hair_colour"]
    hair = drawing.mask(face_outline(HAIR_GROWTH.get(style, 0.02)))
    below = drawing.mask(curve(HAIRLINES[style], closed=False) + [(0.8, 1), (0.2, 1)])
    hair = ImageChops.subtract(hair, below)
    if style not in LOCKS:
        hair = ImageChops.subtract(hair, drawing.mask([(0, 0.5), (1, 0.5), (1, 1), (0, 1)]))
    drawing.fill(hair, colour)
    if style in ("curly", "afro"):
        bumps = [(0.355 + 0.0363 * k, 0.325 - 0.05 * math.sin(math.pi * k / 8), 0.037, 0.037) for k in range(9)]
        drawing.shape(colour, *bumps)
    if style == "side":
        shape = [
            (0.405, 0.285),
            (0.42, 0.205),
            (0.55, 0.175),
            (0.66, 0.235),
            (0.69, 0.34),
            (0.645, 0.33),
            (0.55, 0.345),
            (0.47, 0.33),
        ]
        drawing.shape(lighter(colour, 0.07), curve(shape))
    elif style not in ("crop", "bald", "curly", "afro"):
        shine = curve([(0.4, 0.285), (0.44, 0.235), (0.52, 0.222)], closed=False)
        drawing.line(lighter(colour, 0.14), shine, 0.013)


# --- Head and face -----------------------------------------------------------------


def draw_body(drawing, look):
    face, shade, _ = SKINS[look["skin"]]
    clothes = look["clothes"]
    shoulders = [(0.5, 0.76), (0.43, 0.765), (0.33, 0.79), (0.2, 0.84), (0.13, 0.93), (0.1, 1.06), (0.3, 1.1)]
    neck = [(0.425, 0.58), (0.425, 0.74), (0.405, 0.775), (0.5, 0.82), (0.595, 0.775), (0.575, 0.74), (0.575, 0.58)]
    body = drawing.mask(curve(mirrored(shoulders)))
    drawing.fill(body, clothes)
    drawing.shape(face, neck)
    under_chin = ImageChops.multiply(drawing.mask(neck), drawing.mask((0.5, 0.615, 0.15, 0.112)))
    drawing.fill(under_chin, shade)
    NECKLINES[look["neckline"]](drawing, clothes, face)


def neck_round(drawing, clothes, face):
    lower = drawing.mask([(0, 0.764), (1, 0.764), (1, 1), (0, 1)])
    drawing.fill(ImageChops.multiply(lower, drawing.mask((0.5, 0.764, 0.118, 0.078))), darker(clothes))
    drawing.fill(ImageChops.multiply(lower, drawing.mask((0.5, 0.764, 0.098, 0.06))), face)


def neck_v(drawing, clothes, face):
    drawing.shape(face, [(0.398, 0.775), (0.602, 0.775), (0.5, 0.915)])
    for x in (0.392, 0.608):
        drawing.line(darker(clothes), [(x, 0.772), (0.5, 0.925)], 0.022)


def neck_shirt(drawing, clothes, face):
    drawing.shape(face, [(0.42, 0.76), (0.58, 0.76), (0.5, 0.85)])
    for side in (1, -1):
        collar = [(0.5 - side * 0.095, 0.735), (0.5 - side * 0.125, 0.79), (0.5 - side * 0.07, 0.885), (0.5, 0.845)]
        drawing.shape(lighter(clothes, 0.3), collar)
    drawing.line(darker(clothes), [(0.5, 0.85), (0.5, 1.0)], 0.007)
    for y in (0.9, 0.965):
        drawing.shape(darker(clothes, 0.3), (0.5, y, 0.0085, 0.0085))


def neck_jacket(drawing, clothes, face):
    drawing.shape("#F4F1EA", [(0.395, 0.765), (0.605, 0.765), (0.535, 1.0), (0.465, 1.0)])
    drawing.shape(face, [(0.42, 0.755), (0.58, 0.755), (0.5, 0.845)])
    for side in (1, -1):
        drawing.shape(
            "#FFFFFF", [(0.5 - side * 0.095, 0.735), (0.5 - side * 0.1, 0.79), (0.5 - side * 0.055, 0.88), (0.5, 0.845)]
        )
        lapel = [
            (0.5 - side * 0.11, 0.755),
            (0.5 - side * 0.2, 0.83),
            (0.5 - side * 0.16, 0.88),
            (0.5 - side * 0.18, 0.905),
            (0.5 - side * 0.035, 1.0),
            (0.5 - side * 0.02, 1.0),
        ]
        drawing.shape(darker(clothes, 0.22), lapel)
    tie = mix(clothes, "#C8553D", 0.75)
    drawing.shape(tie, [(0.478, 0.85), (0.522, 0.85), (0.515, 0.885), (0.535, 1.0), (0.465, 1.0), (0.485, 0.885)])


NECKLINES = {"round": neck_round, "v": neck_v, "shirt": neck_shirt, "jacket": neck_jacket}


def draw_head(drawing, look):
    face, shade, blush = SKINS[look["skin"]]
    for x in (0.326, 0.674):
        drawing.shape(face, (x, 0.462, 0.03, 0.043))
        drawing.shape(shade, (x, 0.465, 0.015, 0.025))
    head = drawing.mask(face_outline())
    drawing.fill(head, face)
    lit = drawing.mask((0.455, 0.43, 0.2, 0.29))
    drawing.fill(ImageChops.subtract(head, lit), shade, 0.55)
    for x in (0.395, 0.605):
        drawing.shape(blush, (x, 0.525, 0.036, 0.025), opacity=0.4)
    if look["freckles"]:
        for x, y in ((0.38, 0.513), (0.4, 0.525), (0.42, 0.512), (0.58, 0.512), (0.6, 0.525), (0.62, 0.513)):
            drawing.shape(shade, (x, y, 0.0055, 0.0055))


def draw_face(drawing, look):
    _, shade, _ = SKINS[look["skin"]]
    line = darker(shade, 0.3)
    brow = darker(look["hair_colour"], 0.12) if look["age"] == "adult" else look["hair_colour"]
    for side in (-1, 1):
        x = 0.5 + side * 0.072
        drawing.shape("#FFFFFF", (x, 0.452, 0.027, 0.021))
        drawing.shape("#2B1D18", (x, 0.453, 0.0185, 0.0195))
        drawing.shape("#FFFFFF", (x + 0.007, 0.446, 0.006, 0.006))
        arch = curve([(x - side * 0.034, 0.404), (x, 0.391), (x + side * 0.038, 0.408)], closed=False)
        drawing.line(brow, arch, 0.0125)
        if look["age"] == "old":
            drawing.line(shade, curve([(x - 0.026, 0.489), (x, 0.495), (x + 0.026, 0.489)], closed=False), 0.005)
    drawing.line(line, curve([(0.507, 0.462), (0.52, 0.515), (0.493, 0.523)], closed=False), 0.0085)


def draw_mouth(drawing, look):
    if look["mouth"] == "grin":
        lips = curve([(0.432, 0.56), (0.5, 0.572), (0.568, 0.56)], closed=False) + curve(
            [(0.568, 0.56), (0.545, 0.598), (0.5, 0.613), (0.455, 0.598), (0.432, 0.56)], closed=False
        )
        open_mouth = drawing.mask(lips)
        drawing.fill(open_mouth, "#7A2E2E")
        drawing.fill(
            ImageChops.multiply(open_mouth, drawing.mask([(0.4, 0.5), (0.6, 0.5), (0.6, 0.585), (0.4, 0.585)])),
            "#FFFFFF",
        )
        drawing.fill(ImageChops.multiply(open_mouth, drawing.mask((0.5, 0.618, 0.042, 0.02))), "#D9686B")
        return
    depth = 0.6 if look["mouth"] == "smile" else 0.581
    width = 0.058 if look["mouth"] == "smile" else 0.042
    colour = mix(SKINS[look["skin"]][1], "#8C2F39", 0.75)
    drawing.line(colour, curve([(0.5 - width, 0.572), (0.5, depth), (0.5 + width, 0.572)], closed=False), 0.0125)


def draw_beard(drawing, look):
    colour = look["hair_colour"]
    kind = look["beard"]
    lower = drawing.mask([(0, 0.47), (1, 0.47), (1, 1), (0, 1)])
    if kind in ("full", "short"):
        beard = ImageChops.multiply(drawing.mask(face_outline(0.008, 0.032 if kind == "full" else 0.004)), lower)
        cheeks = curve(
            [
                (0.3, 0.4),
                (0.345, 0.47),
                (0.375, 0.535),
                (0.44, 0.545),
                (0.5, 0.535),
                (0.56, 0.545),
                (0.625, 0.535),
                (0.655, 0.47),
                (0.7, 0.4),
            ],
            closed=False,
        )
        beard = ImageChops.subtract(beard, drawing.mask(cheeks + [(0.7, 0.2), (0.3, 0.2)]))
        drawing.fill(beard, colour, 1.0 if kind == "full" else 0.82)
        drawing.shape(
            SKINS[look["skin"]][0] if kind == "short" else lighter(colour, 0.06),
            (0.5, 0.583, 0.075, 0.026),
            opacity=0.9,
        )
    elif kind == "goatee":
        drawing.shape(
            colour, curve([(0.452, 0.622), (0.5, 0.614), (0.548, 0.622), (0.54, 0.66), (0.5, 0.682), (0.46, 0.66)])
        )
    if kind in ("moustache", "full"):
        half = [(0.5, 0.535), (0.455, 0.538), (0.412, 0.573), (0.455, 0.567), (0.5, 0.56)]
        drawing.shape(darker(colour, 0.06), curve(half + [(1 - x, y) for x, y in reversed(half[1:-1])], steps=12))


def draw_glasses(drawing, look):
    colour = "#2E2A33"
    for side in (-1, 1):
        x = 0.5 + side * 0.074
        if look["glasses"] == "round":
            drawing.shape("#FFFFFF", (x, 0.455, 0.054, 0.054), opacity=0.16)
            drawing.ring(colour, (x, 0.455, 0.058, 0.058), (x, 0.455, 0.0485, 0.0485))
        else:

            def box(width, height):
                return curve(
                    [
                        (x - width, 0.452 - height * 0.6),
                        (x - width * 0.6, 0.452 - height),
                        (x + width * 0.6, 0.452 - height),
                        (x + width, 0.452 - height * 0.6),
                        (x + width * 0.9, 0.452 + height * 0.6),
                        (x + width * 0.5, 0.452 + height),
                        (x - width * 0.5, 0.452 + height),
                        (x - width * 0.9, 0.452 + height * 0.6),
                    ]
                )

            drawing.shape("#FFFFFF", box(0.056, 0.042), opacity=0.16)
            drawing.ring(colour, box(0.061, 0.047), box(0.051, 0.037))
        drawing.line(colour, [(x + side * 0.058, 0.445), (0.5 + side * 0.172, 0.437)], 0.0085)
    drawing.line(colour, curve([(0.484, 0.452), (0.5, 0.444), (0.516, 0.452)], closed=False), 0.0085)


# --- What is worn on the head --------------------------------------------------------


def scarf_back(drawing, look):
    colour = look["cover_colour"]
    side = [
        (0.5, 0.165),
        (0.385, 0.185),
        (0.3, 0.28),
        (0.283, 0.43),
        (0.295, 0.58),
        (0.27, 0.72),
        (0.235, 0.83),
        (0.36, 0.92),
    ]
    drawing.shape(darker(colour), curve(mirrored(side)))


def headscarf(drawing, look):
    colour = look["cover_colour"]
    side = [
        (0.5, 0.175),
        (0.39, 0.195),
        (0.312, 0.29),
        (0.296, 0.44),
        (0.312, 0.57),
        (0.315, 0.66),
        (0.27, 0.77),
        (0.36, 0.86),
        (0.5, 0.895),
    ]
    cloth = ImageChops.subtract(drawing.mask(curve(mirrored(side))), drawing.mask((0.5, 0.467, 0.149, 0.196)))
    drawing.fill(cloth, colour)
    for fold in (
        [(0.345, 0.62), (0.43, 0.715), (0.56, 0.745)],
        [(0.66, 0.63), (0.6, 0.74), (0.47, 0.815)],
        [(0.37, 0.28), (0.44, 0.225), (0.52, 0.212)],
    ):
        drawing.line(darker(colour, 0.14), curve(fold, closed=False), 0.0095)


def hat(drawing, look):
    colour = look["cover_colour"]
    drawing.shape(
        colour,
        curve([(0.335, 0.325), (0.345, 0.21), (0.4, 0.135), (0.5, 0.15), (0.6, 0.135), (0.655, 0.21), (0.665, 0.325)]),
    )
    drawing.shape(darker(colour, 0.4), [(0.335, 0.275), (0.665, 0.275), (0.667, 0.325), (0.333, 0.325)])
    drawing.shape(darker(colour, 0.1), (0.5, 0.33, 0.255, 0.036))


def beanie(drawing, look):
    colour = look["cover_colour"]
    drawing.shape(lighter(colour, 0.25), (0.5, 0.14, 0.05, 0.048))
    drawing.shape(
        colour,
        curve(
            [
                (0.315, 0.35),
                (0.33, 0.24),
                (0.41, 0.165),
                (0.5, 0.152),
                (0.59, 0.165),
                (0.67, 0.24),
                (0.685, 0.35),
                (0.5, 0.34),
            ]
        ),
    )
    band = curve(
        [
            (0.305, 0.375),
            (0.308, 0.31),
            (0.4, 0.287),
            (0.5, 0.28),
            (0.6, 0.287),
            (0.692, 0.31),
            (0.695, 0.375),
            (0.6, 0.352),
            (0.5, 0.346),
            (0.4, 0.352),
        ]
    )
    drawing.shape(darker(colour, 0.15), band)
    for k in range(9):
        x = 0.345 + k * 0.0388
        lift = 0.03 * (1 - abs(k - 4) / 4)
        drawing.line(darker(colour, 0.28), [(x, 0.325 - lift), (x, 0.35 - lift * 0.6)], 0.006)


def turban(drawing, look):
    colour = look["cover_colour"]
    drawing.shape(
        colour,
        curve(
            [
                (0.3, 0.4),
                (0.285, 0.28),
                (0.36, 0.165),
                (0.5, 0.13),
                (0.64, 0.165),
                (0.715, 0.28),
                (0.7, 0.4),
                (0.64, 0.345),
                (0.5, 0.27),
                (0.36, 0.345),
            ]
        ),
    )
    for fold in (
        [(0.3, 0.3), (0.45, 0.245), (0.66, 0.175)],
        [(0.305, 0.355), (0.45, 0.285), (0.7, 0.245)],
        [(0.7, 0.32), (0.56, 0.262), (0.35, 0.19)],
        [(0.34, 0.24), (0.44, 0.2), (0.56, 0.143)],
    ):
        drawing.line(darker(colour, 0.16), curve(fold, closed=False), 0.0095)


def cap(drawing, look):
    colour = look["cover_colour"]
    drawing.shape(
        colour,
        curve(
            [
                (0.318, 0.35),
                (0.33, 0.24),
                (0.41, 0.168),
                (0.5, 0.155),
                (0.59, 0.168),
                (0.67, 0.24),
                (0.682, 0.35),
                (0.5, 0.325),
            ]
        ),
    )
    drawing.shape(
        darker(colour, 0.2),
        curve([(0.33, 0.345), (0.42, 0.305), (0.58, 0.305), (0.67, 0.345), (0.66, 0.372), (0.5, 0.35), (0.34, 0.372)]),
    )
    drawing.shape(lighter(colour, 0.5), (0.5, 0.24, 0.035, 0.035))
    drawing.shape(darker(colour, 0.2), (0.5, 0.155, 0.016, 0.01))


COVERS = {"headscarf": headscarf, "hat": hat, "beanie": beanie, "turban": turban, "cap": cap}


def portrait(look, size):
    look = {**{word: choices[0] for word, choices in LOOKS.items()}, **look}
    drawing = Drawing()
    draw_background(drawing, look)
    covered = look["cover"] in ("headscarf", "turban")
    if look["cover"] == "headscarf":
        scarf_back(drawing, look)
    elif not covered and look["hair"] in BACK_HAIR:
        BACK_HAIR[look["hair"]](drawing, look["hair_colour"])
    draw_body(drawing, look)
    draw_head(drawing, look)
    if look["beard"]:
        draw_beard(drawing, look)
    draw_face(drawing, look)
    draw_mouth(drawing, look)
    if not covered:
        draw_front_hair(drawing, look)
    if look["glasses"]:
        draw_glasses(drawing, look)
    if look["cover"]:
        COVERS[look["cover"]](drawing, look)
    if look["earrings"]:
        drawing.shape(look["earrings"], (0.326, 0.525, 0.0135, 0.0135), (0.674, 0.525, 0.0135, 0.0135))
    image = drawing.image.resize((size, size), Image.LANCZOS)
    return image if look["background"] is None else image.convert("RGB")
