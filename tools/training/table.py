"""A table of what was aimed at and what was reached."""


class Table:
    def __init__(self):
        self.rows = []

    def add(self, measure, reached, aim=None, remark=""):
        """`aim`: the least and the most that is wanted, None for no limit."""
        low, high = aim or (None, None)
        miss = max(low - reached if low is not None else 0, reached - high if high is not None else 0, 0)
        verdict = "" if aim is None else "reached" if miss == 0 else f"missed by {miss:.1f}"
        self.rows.append((measure, f"{round(reached, 1) + 0.0:.1f}", self.describe(low, high), verdict, remark))

    @staticmethod
    def describe(low, high):
        if low is not None and high is not None:
            return f"{low:.1f} to {high:.1f}"
        if high is not None:
            return f"at most {high:.1f}"
        return "" if low is None else f"at least {low:.1f}"

    def print(self, markdown):
        rows = [("Measure", "Reached", "Aim", "Verdict", "Remark"), *self.rows]
        widths = [max(len(row[column]) for row in rows) for column in range(5)]
        for number, row in enumerate(rows):
            if markdown:
                print("| " + " | ".join(row) + " |")
                if number == 0:
                    print("|---" * 5 + "|")
            else:
                print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())
