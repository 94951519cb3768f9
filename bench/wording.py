"""How figures are written in tables and plots."""


def readable(figure, unit):
    """Three digits of a figure in bytes ("B") or nanoseconds ("ns")."""
    if unit == "ns":
        for name, nanoseconds in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
            # From here on, three digits of the smaller unit would be 1000.
            if figure >= nanoseconds * 0.9995:
                figure, unit = figure / nanoseconds, name
                break
    return f"{figure:#.3g}".rstrip(".") + f" {unit}"


def ratio(value):
    decimals = 2 if value < 9.995 else 1 if value < 99.95 else 0
    return f"{value:.{decimals}f}"
