"""What is concluded from measured figures. `scripts/bench --selftest` tries it on figures made up for it."""

import dataclasses
import math
from typing import Optional, Sequence

LINES_FOR_AS_MUCH = 0.6  # of the lines of qnpp, which needs some line directives more than others
TEXT_FOR_AS_MUCH = 0.5  # of its text; below that, something was left out and not only written in another way
TIE = 1.15
BEHIND = 1.3


@dataclasses.dataclass(frozen=True)
class Outcome:
    """What became of one construct in one program."""

    seconds: float  # without the time to start the program
    failure: Optional[str]
    stopped: bool  # by a signal or the time limit, rather than by its own decision
    lines: int  # written
    text: int  # bytes written that are neither white space nor line directives
    said: int = 0  # messages


def shares(peer: Outcome, qnpp: Outcome) -> list[tuple[float, float]]:
    """Of qnpp's lines, errors and text, the shares that the peer writes too, each with what is as much."""
    errors = qnpp.said if qnpp.failure else 0
    return [(peers / qnpps if qnpps else 1, enough) for peers, qnpps, enough in (
        (peer.lines, qnpp.lines, LINES_FOR_AS_MUCH), (peer.said, errors, LINES_FOR_AS_MUCH),
        (peer.text, qnpp.text, TEXT_FOR_AS_MUCH))]


def share(peer: Outcome, qnpp: Outcome) -> float:
    """The first of `shares` that is not as much, or that of the text."""
    of = shares(peer, qnpp)
    return next((one for one, enough in of if one < enough), of[-1][0])


def does_as_much(peer: Outcome, qnpp: Outcome) -> bool:
    return all(one >= enough for one, enough in shares(peer, qnpp))


def may_be_compared(peer: Outcome, qnpp: Outcome) -> bool:
    """A peer that refuses what qnpp takes is left out. Where qnpp reports errors too, only one that was stopped is."""
    return not peer.stopped and (not peer.failure or qnpp.failure is not None)


def best_peer(qnpp: Outcome, peers: dict[str, Outcome]) -> tuple[Optional[str], bool]:
    """The fastest peer that does as much as qnpp, and True. If there is none, the fastest that does anything, and
    False."""
    compared = {name: peer for name, peer in peers.items() if may_be_compared(peer, qnpp)}
    equal = {name: peer for name, peer in compared.items() if does_as_much(peer, qnpp)}
    of = equal or compared
    return min(of, key=lambda name: of[name].seconds, default=None), bool(equal)


def net(seconds: float, startup: float) -> float:
    """Never zero, so that ratios and logarithms exist."""
    return max(seconds - startup, 1e-4)


def mark(ratio: Optional[float]) -> str:
    if ratio is None or ratio < 1 / TIE:
        return ""
    return "tie" if ratio < TIE else "behind" if ratio > BEHIND else "slower"


def exponent(sizes: Sequence[float], seconds: Sequence[float]) -> float:
    """The e of seconds = c * size^e that fits the three largest best, by least squares on the logarithms."""
    points = sorted(zip(sizes, seconds))[-3:]
    x, y = ([math.log(value) for value in column] for column in zip(*points))
    mean_x, mean_y = sum(x) / len(x), sum(y) / len(y)
    return (sum((one - mean_x) * (other - mean_y) for one, other in zip(x, y))
            / sum((one - mean_x) ** 2 for one in x))
