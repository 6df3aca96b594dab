"""From measured rows to a judged table. A row is a dictionary of medians; `spread` is its noise."""
import statistics


def summary(values):
    """Median, and the half of the middle half's width as a share of it."""
    middle = statistics.median(values)
    if len(values) < 4:
        return {"median": middle, "spread": (max(values) - min(values)) / 2 / middle}
    low, _, high = statistics.quantiles(values, n=4)
    return {"median": middle, "spread": (high - low) / 2 / middle}


def value_of(goal, rows):
    row = rows[f"{goal.work}/{goal.row}"]
    over = rows.get(f"{goal.work}/{goal.over}")
    if goal.kind == "unit_ns":
        return row["time"]["median"] / row["units"]
    if goal.kind == "added_ns":
        return (row["time"]["median"] - over["time"]["median"]) / row["units"]
    if goal.kind == "peak_mib":
        return row["peak_kib"]["median"] / 1024
    if goal.kind == "added_kib":
        return row["peak_kib"]["median"] - over["peak_kib"]["median"]
    measured = "time" if goal.kind == "ratio" else goal.kind
    return row[measured]["median"] / over[measured]["median"]


def judge(goals, rows):
    judged = []
    for goal in goals:
        if f"{goal.work}/{goal.row}" not in rows:
            continue  # a quick run leaves the long ones out
        value = value_of(goal, rows)
        met = value <= goal.limit if goal.at_most else value >= goal.limit
        judged.append({"work": goal.text, "value": round(value, 3),
                       "goal": f"{'<=' if goal.at_most else '>='} {goal.limit:.4g}", "met": met})
    return judged
