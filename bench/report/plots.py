"""Plots as SVG files, drawn by gnuplot."""
import subprocess

STYLE = ("set terminal svg size {width},{height} font 'sans,12' background 'white'\n"
         "set output '{file}'\nset grid\n")


def draw(script):
    subprocess.run(["gnuplot"], input=script, text=True, check=True, capture_output=True)


def ratios(judged, file):
    """A bar for each goal: the value as a share of what the goal allows; up to 1 meets it."""
    rows = []
    for row in judged:
        limit = float(row["goal"].split()[1])
        share = row["value"] / limit if row["goal"].startswith("<") else limit / row["value"]
        rows.append(f"\"{row['work']}\" {max(share, 0):.4f}")
    data = "\n".join(f"{len(rows) - i} {row}" for i, row in enumerate(rows))
    draw(STYLE.format(width=1000, height=40 + 24 * len(rows), file=file) +
         "$rows << END\n" + data + "\nEND\n"
         "set style fill solid 0.6\nset xrange [0:*]\nset yrange [0:%d]\nunset key\n"
         "set lmargin 52\nset xlabel 'share of what the goal allows (1 = just met)'\n"
         "set arrow from 1, graph 0 to 1, graph 1 nohead lc rgb 'red' lw 2\n"
         "plot $rows using ($3/2):1:($3/2):(0.35):ytic(2) with boxxyerror lc rgb '#3465a4'\n"
         % (len(rows) + 1))


def growth(points, file):
    """Time a unit over the number of units, for each work; flat is good."""
    works = sorted({point["work"] for point in points})
    script = STYLE.format(width=900, height=600, file=file)
    for work in works:
        script += f"${work} << END\n"
        for point in points:
            if point["work"] == work:
                script += f"{point['size']} {point['seconds'] / point['size'] * 1e9}\n"
        script += "END\n"
    script += ("set logscale xy\nset xlabel 'units'\nset ylabel 'ns a unit'\nplot " + ", ".join(
        f"${work} with linespoints title '{work.replace('_', ' ')}'" for work in works) + "\n")
    draw(script)


def memory(points, file):
    """Peak memory of a process that streams a response, over the response's size."""
    script = STYLE.format(width=900, height=400, file=file) + "$peak << END\n"
    for point in points:
        if point["work"] == "response_bytes":
            script += f"{point['size']} {point['peak_kib'] / 1024}\n"
    draw(script + "END\nset logscale x\nset yrange [0:*]\nset xlabel 'bytes of the response'\n"
         "set ylabel 'peak memory, MiB'\nunset key\nplot $peak with linespoints\n")
