"""Compares what the benchmarks measured with the goals beside this file: check.py MEASURED.json

Prints a line for each figure. Ends with status 1 where one is worse than its goal by more than a tenth, or where a goal
has no figure at all. `ms` is the time of a benchmark; any other name is one of its counters.
"""

import json
import pathlib
import re
import sys

TOLERANCE = 0.1
MILLISECONDS = {"ns": 1e-6, "us": 1e-3, "ms": 1, "s": 1e3}


def name_of(benchmark):
    """The benchmark's name and size, without what says how it was run."""
    return re.sub(r"/(iterations:\d+|repeats:\d+|manual_time|real_time)", "", benchmark["run_name"])


def figure_of(benchmark, counter):
    if counter == "ms":
        return benchmark["real_time"] * MILLISECONDS[benchmark["time_unit"]]
    return benchmark.get(counter)


def judge(figure, goal):
    """How much of the goal the figure takes, 1 being all of it, and a word for that."""
    share = figure / goal["most"] if "most" in goal else goal["least"] / figure
    return "met" if share <= 1 else "near" if share <= 1 + TOLERANCE else "MISSED"


def main():
    goals = json.loads((pathlib.Path(__file__).parent / "goals.json").read_text())
    measured = json.loads(pathlib.Path(sys.argv[1]).read_text())["benchmarks"]
    measured = [each for each in measured if each.get("aggregate_name", "median") == "median"]
    words = []
    for goal in goals:
        found = [each for each in measured if re.fullmatch(goal["benchmark"], name_of(each))]
        figures = [(name_of(each), figure_of(each, goal["counter"])) for each in found]
        figures = [(name, figure) for name, figure in figures if figure is not None]
        if not figures:
            figures = [(goal["benchmark"], None)]
        for name, figure in figures:
            word = "NOT MEASURED" if figure is None else judge(figure, goal)
            words.append(word)
            bound = f"<= {goal['most']}" if "most" in goal else f">= {goal['least']}"
            value = "-" if figure is None else f"{figure:.4g}"
            print(f"{word:12}  {value:>10}  {bound:>8}  {goal['counter']:22}  {name:32}  {goal['work']}")
    failed = [word for word in words if word.isupper()]
    print(f"{len(words)} figures, {words.count('met')} met, {words.count('near')} within a tenth, {len(failed)} not")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
