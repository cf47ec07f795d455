#!/usr/bin/python3
"""Render one Drapex result file (legacy VTK) to a PNG picture, off screen.

    /usr/bin/python3 tools/render_vtk.py examples/draping/Results_draping -o draping.png
    /usr/bin/python3 tools/render_vtk.py Results_job/job_12.vtk --array E23 --view top -o shear.png

The input is a result file or a results folder (its last file is taken).
The cells are coloured by one of the twelve cell arrays (--array, default
S11) with a colour bar; --view chooses the camera (iso, top, front, side).
--hide-zero-cells leaves out a tool surface (contact elements write zeros).
--yarns draws the warp and weft directions of the fabric cells (the cell
vectors WARP and WEFT) as short dark red and dark blue lines through the
centre of each cell.
The unused point 0 that every result file carries is left out of the view.

Needs VTK's Python bindings (Debian's python3-vtk9). VTK draws through X:
without a display the script runs itself again under xvfb-run (Debian's
xvfb), which gives it a virtual one.
"""

import argparse
import os
import re
import shutil
import sys

ARRAYS = ("E11", "E22", "E33", "E12", "E13", "E23", "S11", "S22", "S33", "S12", "S13", "S23")
VIEWS = {
    # direction from the focal point to the camera, and the view-up vector
    "iso": ((1.0, -1.4, 1.1), (0.0, 0.0, 1.0)),
    "top": ((0.0, 0.0, 1.0), (0.0, 1.0, 0.0)),
    "front": ((0.0, -1.0, 0.0), (0.0, 0.0, 1.0)),
    "side": ((1.0, 0.0, 0.0), (0.0, 0.0, 1.0)),
}


class RenderError(Exception):
    pass


def result_file(path):
    """The file itself, or the highest-numbered <stem>_<N>.vtk of a folder."""
    if os.path.isdir(path):
        numbered = []
        for name in os.listdir(path):
            match = re.match(r"^(.*)_(\d+)\.vtk$", name)
            if match:
                numbered.append((int(match.group(2)), name))
        if not numbered:
            raise RenderError(f"{path} holds no result files (<stem>_<N>.vtk)")
        return os.path.join(path, max(numbered)[1])
    if not os.path.isfile(path):
        raise RenderError(f"{path} does not exist")
    return path


def build_parser():
    p = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    p.add_argument("input", help="a result file (.vtk) or a results folder")
    p.add_argument("-o", "--output", required=True, help="PNG file to write")
    p.add_argument("--array", default="S11", choices=ARRAYS, help="cell array that colours the mesh")
    p.add_argument("--view", default="iso", choices=sorted(VIEWS), help="camera direction")
    p.add_argument("--size", nargs=2, type=int, default=(1000, 700), metavar=("W", "H"))
    p.add_argument("--title", help="text in the upper left corner (default: the file name)")
    p.add_argument("--range", nargs=2, type=float, metavar=("MIN", "MAX"), help="colour range")
    p.add_argument("--no-edges", action="store_true", help="do not draw the element edges")
    p.add_argument("--hide-zero-cells", action="store_true",
                   help="leave out cells whose twelve arrays are all zero (a tool surface of contact elements)")
    p.add_argument("--yarns", action="store_true",
                   help="draw the warp (dark red) and weft (dark blue) directions of fabric cells")
    p.add_argument("--yarn-length", type=float, metavar="L",
                   help="length of the yarn lines (default: 0.7 times the mean cell size)")
    return p


def need_display():
    """Re-runs the script under xvfb-run when there is no X display."""
    if os.environ.get("DISPLAY") or os.environ.get("DRAPEX_RENDER_UNDER_XVFB"):
        return
    xvfb = shutil.which("xvfb-run")
    if not xvfb:
        raise RenderError("no X display and no xvfb-run to make one (Debian: apt-get install xvfb xauth)")
    env = dict(os.environ, DRAPEX_RENDER_UNDER_XVFB="1")
    sys.stdout.flush()
    os.execve(xvfb, [xvfb, "-a", "-s", "-screen 0 1600x1200x24", sys.executable] + sys.argv, env)


def without_zero_cells(vtk, grid):
    """The grid without the cells that hold zero in all twelve arrays: contact
    elements declared in the deck write nothing else."""
    arrays = [grid.GetCellData().GetArray(name) for name in ARRAYS]
    arrays = [a for a in arrays if a is not None]
    keep = vtk.vtkIdList()
    for cell in range(grid.GetNumberOfCells()):
        if any(a.GetTuple1(cell) != 0.0 for a in arrays):
            keep.InsertNextId(cell)
    extract = vtk.vtkExtractCells()
    extract.SetInputData(grid)
    extract.SetCellList(keep)
    extract.Update()
    return extract.GetOutput()


def yarn_actors(vtk, grid, path, length):
    """Lines of the given length along WARP and WEFT through the cell centres;
    a zero vector (a cell without yarns) gives a line of no length."""
    if grid.GetCellData().GetArray("WARP") is None:
        raise RenderError(f"{path} has no yarn directions (WARP, WEFT)")
    if length is None:
        bounds = grid.GetBounds()
        extents = sorted(bounds[2 * k + 1] - bounds[2 * k] for k in range(3))
        length = 0.7 * (extents[1] * extents[2] / max(grid.GetNumberOfCells(), 1)) ** 0.5
    centres = vtk.vtkCellCenters()
    centres.SetInputData(grid)
    centres.Update()
    actors = []
    for name, colour in (("WARP", (0.0, 0.0, 0.0)), ("WEFT", (1.0, 1.0, 1.0))):
        points = vtk.vtkPolyData()
        points.DeepCopy(centres.GetOutput())
        points.GetPointData().SetActiveVectors(name)
        line = vtk.vtkLineSource()
        line.SetPoint1(-0.5, 0.0, 0.0)
        line.SetPoint2(0.5, 0.0, 0.0)
        glyphs = vtk.vtkGlyph3D()
        glyphs.SetInputData(points)
        glyphs.SetSourceConnection(line.GetOutputPort())
        glyphs.SetVectorModeToUseVector()
        glyphs.SetScaleModeToScaleByVector()
        glyphs.SetScaleFactor(length)
        glyphs.OrientOn()
        mapper = vtk.vtkPolyDataMapper()
        mapper.SetInputConnection(glyphs.GetOutputPort())
        mapper.ScalarVisibilityOff()
        actor = vtk.vtkActor()
        actor.SetMapper(mapper)
        actor.GetProperty().SetColor(*colour)
        actor.GetProperty().SetLineWidth(2.0)
        actors.append(actor)
    return actors


def render(args):
    try:
        import vtk
    except ImportError:
        raise RenderError("VTK's Python bindings are missing (Debian: python3-vtk9)")

    path = result_file(args.input)
    reader = vtk.vtkUnstructuredGridReader()
    reader.SetFileName(path)
    reader.ReadAllScalarsOn()
    reader.Update()
    grid = reader.GetOutput()
    if grid is None or grid.GetNumberOfCells() == 0:
        raise RenderError(f"{path} holds no cells")
    values = grid.GetCellData().GetArray(args.array)
    if values is None:
        raise RenderError(f"{path} has no cell array {args.array}")

    if args.hide_zero_cells:
        grid = without_zero_cells(vtk, grid)
        if grid.GetNumberOfCells() == 0:
            raise RenderError(f"{path} holds only cells whose arrays are all zero")

    # Surface of the cells only: point 0 belongs to no cell and is dropped.
    surface = vtk.vtkGeometryFilter()
    surface.SetInputData(grid)
    clean = vtk.vtkCleanPolyData()
    clean.SetInputConnection(surface.GetOutputPort())
    clean.Update()
    mesh = clean.GetOutput()
    mesh.GetCellData().SetActiveScalars(args.array)

    low, high = args.range if args.range else values.GetRange()
    if low == high:
        low, high = low - 0.5, high + 0.5
    lut = vtk.vtkLookupTable()
    lut.SetHueRange(0.667, 0.0)
    lut.SetNumberOfTableValues(256)
    lut.SetTableRange(low, high)
    lut.Build()

    mapper = vtk.vtkPolyDataMapper()
    mapper.SetInputData(mesh)
    mapper.SetScalarModeToUseCellData()
    mapper.SetLookupTable(lut)
    mapper.SetScalarRange(low, high)
    mapper.ScalarVisibilityOn()

    actor = vtk.vtkActor()
    actor.SetMapper(mapper)
    prop = actor.GetProperty()
    # Rods are lines: draw them thick; the edges of a triangle mesh thin.
    prop.SetLineWidth(1.0 if mesh.GetNumberOfPolys() > 0 else 3.0)
    if not args.no_edges:
        prop.EdgeVisibilityOn()
        prop.SetEdgeColor(0.15, 0.15, 0.15)

    bar = vtk.vtkScalarBarActor()
    bar.SetLookupTable(lut)
    bar.SetTitle(args.array)
    bar.SetNumberOfLabels(5)
    bar.SetWidth(0.09)
    bar.SetHeight(0.6)
    bar.SetPosition(0.89, 0.2)
    bar.UnconstrainedFontSizeOn()
    bar.GetTitleTextProperty().SetFontSize(20)
    bar.GetLabelTextProperty().SetFontSize(15)
    for text in (bar.GetTitleTextProperty(), bar.GetLabelTextProperty()):
        text.SetColor(0.1, 0.1, 0.1)
        text.ShadowOff()
        text.ItalicOff()

    title = vtk.vtkTextActor()
    title.SetInput(args.title if args.title is not None else os.path.basename(path))
    title.GetTextProperty().SetFontSize(20)
    title.GetTextProperty().SetColor(0.1, 0.1, 0.1)
    title.SetDisplayPosition(12, args.size[1] - 34)

    renderer = vtk.vtkRenderer()
    renderer.SetBackground(1.0, 1.0, 1.0)
    renderer.AddActor(actor)
    if args.yarns:
        for yarn in yarn_actors(vtk, grid, path, args.yarn_length):
            renderer.AddActor(yarn)
        # The lines lie in the surface: push the faces back so that they show.
        mapper.SetResolveCoincidentTopologyToPolygonOffset()
    renderer.AddActor2D(bar)
    renderer.AddActor2D(title)

    direction, up = VIEWS[args.view]
    bounds = mesh.GetBounds()
    centre = [(bounds[2 * k] + bounds[2 * k + 1]) / 2.0 for k in range(3)]
    camera = renderer.GetActiveCamera()
    camera.SetFocalPoint(*centre)
    camera.SetPosition(*[centre[k] + direction[k] for k in range(3)])
    camera.SetViewUp(*up)
    renderer.ResetCamera()

    window = vtk.vtkRenderWindow()
    window.SetOffScreenRendering(1)
    window.AddRenderer(renderer)
    window.SetSize(*args.size)
    window.Render()

    image = vtk.vtkWindowToImageFilter()
    image.SetInput(window)
    image.ReadFrontBufferOff()
    image.Update()
    writer = vtk.vtkPNGWriter()
    writer.SetFileName(args.output)
    writer.SetInputConnection(image.GetOutputPort())
    writer.Write()
    if not os.path.isfile(args.output):
        raise RenderError(f"cannot write {args.output}")
    return path


def main(argv=None):
    args = build_parser().parse_args(argv)
    try:
        result_file(args.input)  # refuse bad input before looking for a display
        need_display()
        path = render(args)
    except RenderError as error:
        print(f"render_vtk.py: {error}", file=sys.stderr)
        return 1
    print(f"{args.output}: {args.array} of {path}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
