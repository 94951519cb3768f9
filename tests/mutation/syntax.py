"""Finds the mutants of code, in the syntax tree that libclang makes of it."""

import json
import os
import pathlib
import re
import shlex

from clang import cindex

import literals
import mutants
from source import Source

# What an operator is changed to. Where it compares no numbers, only those are
# tried that need no other operator.
COMPARISONS = {"<": ("<=", ">=", "!="), "<=": ("<", ">", "=="),
               ">": (">=", "<=", "!="), ">=": (">", "<", "=="),
               "==": ("!=", "<=", ">="), "!=": ("==", "<", ">")}
OPERATORS = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "&": "|",
             "|": "&", "^": "&", "<<": ">>", ">>": "<<"}
LOGIC = {"&&": "||", "||": "&&"}

# Functions that are easily taken for each other.
RELATIVES = {}
for pair in ("begin end", "min max", "lower_bound upper_bound", "front back",
             "find rfind", "find_first_of find_first_not_of",
             "find_last_of find_last_not_of", "strcasecmp strcmp",
             "wcscasecmp wcscmp", "tolower toupper", "towlower towupper",
             "any_of all_of"):
    one, two = pair.split()
    RELATIVES[one], RELATIVES[two] = two, one

NUMBERS = {"BOOL", "CHAR_U", "UCHAR", "USHORT", "UINT", "ULONG", "ULONGLONG",
           "CHAR_S", "SCHAR", "WCHAR", "SHORT", "INT", "LONG", "LONGLONG",
           "ENUM"}
FUNCTIONS = {"FUNCTION_DECL", "CXX_METHOD", "CONSTRUCTOR", "DESTRUCTOR",
             "CONVERSION_FUNCTION", "FUNCTION_TEMPLATE"}
SCOPES = {"NAMESPACE", "CLASS_DECL", "STRUCT_DECL", "CLASS_TEMPLATE",
          "CLASS_TEMPLATE_PARTIAL_SPECIALIZATION", "LINKAGE_SPEC",
          "UNEXPOSED_DECL"}
# What `{}` stands for, too.
ZEROS = {"0", "false", "nullptr"}
# What only the compiler looks at.
SKIPPED = {"STATIC_ASSERT", "CXX_UNARY_EXPR", "ALIGNED_ATTR", "TYPE_REF",
           "TEMPLATE_TYPE_PARAMETER", "USING_DECLARATION", "NAMESPACE_REF",
           "TEMPLATE_REF"}
# An initialiser of so many elements is a table.
TABLE_ROWS = 4


class CannotParse(Exception):
    """Tells which source libclang does not understand, and why."""


class Parser:
    """Finds the mutants of the sources of a build folder."""

    def __init__(self, root, compile_commands):
        self.root = os.path.realpath(root)
        self._index = cindex.Index.create()
        self._units = {}
        commands = json.loads(pathlib.Path(compile_commands).read_text())
        self._commands = {os.path.realpath(command["file"]): command
                          for command in commands}

    def mutants_of(self, path):
        """The mutants of a source, or of what a source includes."""
        real = os.path.realpath(os.path.join(self.root, path))
        text = pathlib.Path(real).read_text("latin-1")
        found = mutants.Mutants(Source(path, text))
        finder = Finder(found, real)
        finder.find(self._unit_with(real).cursor)
        if not finder.has_declarations:
            mutants.add_rows_of_macros(found)
        return found.found()

    def _unit_with(self, real):
        """The translation unit of a source; of another file, one that includes
        it, of the nearest folder that has any."""
        if real in self._commands:
            return self._parse(real)
        for main in sorted(self._commands, reverse=True, key=lambda main: (
                len(os.path.commonpath([main, real])), main)):
            unit = self._parse(main)
            if any(os.path.realpath(include.include.name) == real
                   for include in unit.get_includes()):
                return unit
        raise CannotParse(f"no source of the build includes {real}")

    def _parse(self, main):
        if main not in self._units:
            command = shlex.split(self._commands[main]["command"])
            flags = [flag for flag in command
                     if re.match("-(I|D|U|std=)", flag)]
            unit = self._index.parse(main, args=["-xc++", *flags])
            for problem in unit.diagnostics:
                if problem.severity >= cindex.Diagnostic.Error:
                    raise CannotParse(f"libclang: {problem}")
            self._units[main] = unit
        return self._units[main]


class Finder:
    """Walks the declarations of one file in a translation unit.

    A span is a pair of offsets; a node is libclang's cursor. Methods named
    _on_KIND add the changes of nodes of that kind.
    """

    def __init__(self, found, real):
        self.has_declarations = False
        self._real = real
        self._source = found.source
        self._add_edit = found.add
        self._mutants = found
        self._place = ""        # the function or variable that is visited
        self._result = None     # the type it returns
        self._is_here = {}

    def find(self, node):
        """Visits the file's declarations. A file that includes it in the middle
        may hold the scope around them."""
        for child in node.get_children():
            if self._here(child):
                self.has_declarations = True
                self._visit(child)
            elif child.kind.name in SCOPES:
                self.find(child)

    def _here(self, node):
        file = node.extent.start.file
        if file is None:
            return False
        if file.name not in self._is_here:
            self._is_here[file.name] = os.path.realpath(file.name) == self._real
        return self._is_here[file.name]

    def _visit(self, node):
        kind = node.kind.name
        if kind in SKIPPED or not self._here(node):
            return
        around = self._place, self._result
        if kind in FUNCTIONS:
            # A constructor of a template is spelt with its arguments.
            named = node.semantic_parent if kind == "CONSTRUCTOR" else node
            self._place, self._result = named.spelling, node.result_type
        elif kind == "LAMBDA_EXPR":
            self._result = None
        elif kind in ("VAR_DECL", "FIELD_DECL") and not self._place:
            self._place = node.spelling
        children = list(node.get_children())
        if not (kind == "VAR_DECL" and self._is_table(node)):
            getattr(self, "_on_" + kind, lambda *_: None)(node, children)
            for child in children:
                self._visit(child)
        self._place, self._result = around

    # Places in the text.

    @staticmethod
    def _span(node):
        return node.extent.start.offset, node.extent.end.offset

    def _text(self, span):
        return self._source.text[span[0]:span[1]]

    def _add(self, span, text):
        self._add_edit(*span, text, self._place)

    def _token(self, i):
        """The span of a token."""
        return self._source.tokens[i].start, self._source.tokens[i].end

    def _is_whole(self, span):
        """Whether the span begins and ends where tokens do, which is not so for
        what a macro made."""
        last = self._source.first_from(span[1]) - 1
        return (self._source.token_at(span[0]) >= 0 and
                self._source.tokens[last].end == span[1])

    def _operator_between(self, left, right):
        """The number of the only token between two nodes, else -1."""
        between = self._source.tokens_between(self._span(left)[1],
                                              self._span(right)[0])
        return between[0] if len(between) == 1 else -1

    def _parentheses(self, node, word):
        """The numbers of the parentheses behind the word that a statement
        begins with."""
        i = self._source.token_at(self._span(node)[0])
        if self._source.word(i) != word:
            return None
        i += 2 if self._source.word(i + 1) == "constexpr" else 1
        last = self._source.partners.get(i)
        return None if last is None else (i, last)

    # Types.

    @staticmethod
    def _bare(type_):
        type_ = type_.get_canonical()
        if type_.kind.name in ("LVALUEREFERENCE", "RVALUEREFERENCE"):
            type_ = type_.get_pointee().get_canonical()
        return type_

    def _kind(self, node):
        return self._bare(node.type).kind.name

    def _type_name(self, node):
        return re.sub(r"\bconst\b ?", "", self._bare(node.type).spelling)

    # Declarations.

    def _is_table(self, node):
        """Whether a variable is a table, whose mutants then are added."""
        start, end = self._span(node)
        tokens = self._source.tokens_between(start, end)
        first = next((i for i in tokens if self._source.word(i) == "{" and
                      self._source.partners.get(i) == tokens[-1]), None)
        if first is None or "[" not in node.type.spelling:
            return False
        rows = self._source.split(first + 1, tokens[-1], ",")
        if len(rows) < TABLE_ROWS:
            return False
        mutants.add_table(self._mutants, rows, node.spelling, separator=",")
        return True

    def _on_VAR_DECL(self, node, children):
        """Another initial value: T x = value;"""
        i = self._source.token_at(node.location.offset)
        if (self._source.word(i + 1) == "=" and
                self._source.word(i + 2) not in ZEROS and
                node.type.get_canonical().kind.name in NUMBERS | {"POINTER"} and
                not re.search(r"\bauto\b", self._text(
                    (self._span(node)[0], node.location.offset)))):
            self._add((self._token(i + 1)[1], self._span(node)[1]), " {}")

    _on_FIELD_DECL = _on_VAR_DECL

    def _on_CONSTRUCTOR(self, node, children):
        """Members without their initial values: : member_(value)"""
        for child in children:
            if child.kind.name == "MEMBER_REF" and self._here(child):
                i = self._source.token_at(self._span(child)[0]) + 1
                last = self._source.partners.get(i)
                if last is not None and self._source.word(i + 1) not in ZEROS:
                    self._add((self._token(i)[1], self._token(last)[0]), "")

    # Statements.

    def _end_of_statement(self, node):
        """The offset behind a statement, its semicolon included."""
        end = self._span(node)[1]
        i = self._source.first_from(end)
        return self._token(i)[1] if self._source.word(i) == ";" else end

    def _delete_statement(self, node):
        """Deletes an expression or a jump. Declarations are needed, and values
        that are returned change in _on_RETURN_STMT."""
        span = self._span(node)
        if not self._here(node) or self._end_of_statement(node) == span[1]:
            return
        kind = node.kind.name
        if (node.kind.is_expression() or kind in ("BREAK_STMT", "CONTINUE_STMT")
                or kind == "RETURN_STMT" and not list(node.get_children())):
            self._add(span, "")
        if kind == "CONTINUE_STMT":
            self._add(span, "break")

    def _on_COMPOUND_STMT(self, node, children):
        for child in children:
            self._delete_statement(child)

    def _on_CASE_STMT(self, node, children):
        self._delete_statement(children[-1])

    _on_DEFAULT_STMT = _on_CASE_STMT

    def _empty_body(self, node):
        """Empties the body of a statement, unless the deletion of its only
        statement does so."""
        children = list(node.get_children())
        if len(children) > 1 or children and not (
                children[0].kind.is_expression() or
                children[0].kind.name in ("BREAK_STMT", "CONTINUE_STMT") or
                self._text(self._span(children[0])) == "return"):
            self._add(self._span(node), "{}")

    def _change_condition(self, span, nodes, forced):
        """Negates a condition and forces it. `nodes` are those in it."""
        text = self._text(span)
        span = (span[0] + len(text) - len(text.lstrip()),
                span[1] - len(text) + len(text.rstrip()))
        text = text.strip()
        inside = [node for node in nodes if span[0] <= self._span(node)[0] and
                  self._span(node)[1] <= span[1]]
        if not inside or any(
                node.kind.name in ("VAR_DECL", "DECL_STMT") for node in inside):
            return
        # A comparison and a `!` have the contrary among their own changes.
        top = self._inner(inside[-1])
        operands = list(top.get_children())
        middle = (self._operator_between(operands[0], operands[-1])
                  if len(operands) == 2 else -1)
        is_not = text.startswith("!") and top.kind.name in ("UNARY_OPERATOR",
                                                            "CALL_EXPR")
        if not is_not and self._source.word(middle) not in COMPARISONS:
            self._add(span, f"!({text})")
        for value in forced:
            self._add(span, value)

    @staticmethod
    def _inner(node):
        """The expression in parentheses and conversions."""
        while node.kind.name in ("UNEXPOSED_EXPR", "PAREN_EXPR"):
            children = list(node.get_children())
            if len(children) != 1:
                break
            node = children[0]
        return node

    def _on_IF_STMT(self, node, children):
        parentheses = self._parentheses(node, "if")
        if parentheses is None:
            return
        first, last = parentheses
        parts = self._source.split(first + 1, last, ";")
        condition = self._token(parts[-1][0])[0], self._token(last)[0]
        bodies = [child for child in children
                  if self._span(child)[0] > condition[1]]
        self._change_condition(
            condition, children,
            ["true", "false"] if len(bodies) == 2 else ["true"])
        for body in bodies:
            if body.kind.name != "IF_STMT":
                self._empty_body(body)

    def _on_WHILE_STMT(self, node, children):
        first, last = self._parentheses(node, "while")
        self._change_condition((self._token(first)[1], self._token(last)[0]),
                               children[:-1], ["false"])
        self._leave_after_one_round(children[-1])

    def _on_DO_STMT(self, node, children):
        last = self._source.first_from(self._span(node)[1]) - 1
        first = self._source.partners[last]
        self._change_condition((self._token(first)[1], self._token(last)[0]),
                               children[1:], ["false"])

    def _on_FOR_STMT(self, node, children):
        first, last = self._parentheses(node, "for")
        semicolons = [i for i in range(first, last)
                      if self._source.word(i) == ";"]
        condition = (self._token(semicolons[0])[1],
                     self._token(semicolons[1])[0])
        self._change_condition(condition, children[:-1], ["false"])
        self._leave_after_one_round(children[-1])

    def _on_CXX_FOR_RANGE_STMT(self, node, children):
        self._leave_after_one_round(children[-1])
        self._empty_body(children[-1])

    def _on_CXX_CATCH_STMT(self, node, children):
        self._empty_body(children[-1])

    def _leave_after_one_round(self, body):
        statements = list(body.get_children())
        if statements and statements[-1].kind.name not in (
                "BREAK_STMT", "RETURN_STMT"):
            end = self._span(body)[1]
            self._add((end - 1, end), " break; }")

    def _on_RETURN_STMT(self, node, children):
        """Another value: nothing, everything, one more."""
        if not children:
            return
        span = self._span(children[0])
        inner = self._inner(children[0]).kind.name
        text = self._text(span)
        if (not self._is_whole(span) or "LITERAL" in inner or
                text in ("nullptr", "std::nullopt")):
            return      # literals change by themselves
        type_ = self._result or children[0].type
        type_ = type_.get_canonical()
        kind = type_.kind.name
        if kind == "BOOL":
            values = ["true", "false"]
        elif kind in NUMBERS - {"ENUM"}:
            values = ["0", f"({text}) + 1"]
        elif kind == "POINTER":
            values = ["nullptr"]
        elif kind in ("VOID", "LVALUEREFERENCE"):
            values = []
        else:
            values = ["{}"]
        for value in values:
            self._add(span, value)

    # Expressions.

    def _change_operator(self, i, left, right, is_overloaded):
        operator = self._source.word(i)
        left_span, right_span = self._span(left), self._span(right)
        kind = self._kind(left)
        is_number = kind in NUMBERS and not is_overloaded
        without_right = left_span[1], right_span[1]
        without_left = left_span[0], right_span[0]
        if operator in COMPARISONS:
            others = COMPARISONS[operator]
            has_order = is_number and kind != "BOOL"
            if not has_order:
                others = others[:1 if operator in ("==", "!=") else 2]
            for other in others:
                self._add(self._token(i), other)
        elif operator in LOGIC:
            self._add(self._token(i), LOGIC[operator])
            self._add(without_right, "")
            self._add(without_left, "")
        elif is_overloaded:
            if operator in ("+", "<<", ">>", "|"):
                self._add(without_right, "")
            if operator == "+":
                self._add(without_left, "")
            if operator == "+=":
                self._add(self._token(i), "=")
        elif operator in OPERATORS:
            self._add(self._token(i), OPERATORS[operator])
        elif operator[:-1] in OPERATORS:    # one that assigns
            self._add(self._token(i), OPERATORS[operator[:-1]] + "=")
            if operator[:-1] in "+-&|" and kind != "POINTER":
                self._add(self._token(i), "=")

    def _on_BINARY_OPERATOR(self, node, children):
        if len(children) == 2:
            operator = self._operator_between(*children)
            if operator >= 0:
                self._change_operator(operator, *children, is_overloaded=False)

    _on_COMPOUND_ASSIGNMENT_OPERATOR = _on_BINARY_OPERATOR

    def _on_UNARY_OPERATOR(self, node, children):
        span = self._span(node)
        if not children or not self._is_whole(span):
            return
        operand = self._span(children[0])
        first = self._source.token_at(span[0])
        last = self._source.first_from(span[1]) - 1
        is_prefix = operand[0] > span[0]
        i = first if is_prefix else last
        operator = self._source.word(i)
        if operator in ("!", "-", "~"):
            self._add(self._token(i), "")
        elif operator in ("++", "--"):
            variable = self._text(operand)
            before = self._source.word(first - 1)
            behind = self._source.word(last + 1)
            if before == ";" and behind == ")":     # the step of a loop
                self._add(span, f"{variable} {operator[0]}= 2")
                return
            self._add(self._token(i), "--" if operator == "++" else "++")
            if before not in ("{", "}", ";") or behind != ";":
                self._add(span, variable + operator if is_prefix
                          else operator + variable)

    def _on_CONDITIONAL_OPERATOR(self, node, children):
        if len(children) == 3 and self._is_whole(self._span(children[0])):
            self._change_condition(self._span(children[0]), children[:1],
                                   ["true", "false"])

    def _on_literal(self, node, children):
        span = self._span(node)
        if not self._is_whole(span):
            return
        for i in self._source.tokens_between(*span):
            token = self._source.tokens[i]
            changed = []
            if token.kind == "number":
                changed = literals.changed_integers(token.text)
            elif token.kind == "character":
                changed = literals.changed_characters(token.text)
            elif token.kind == "string":
                changed = literals.changed_strings(token.text)
            elif token.text in ("true", "false"):
                changed = ["false" if token.text == "true" else "true"]
            elif token.kind == "name":      # a macro
                changed = [f"({token.text} + 1)"]
            for text in changed:
                self._add(self._token(i), text)

    _on_INTEGER_LITERAL = _on_CHARACTER_LITERAL = _on_literal
    _on_STRING_LITERAL = _on_CXX_BOOL_LITERAL_EXPR = _on_literal

    def _on_DECL_REF_EXPR(self, node, children):
        """Another function, another constant."""
        self._on_MEMBER_REF_EXPR(node, children)
        target = node.referenced
        i = self._source.token_at(node.location.offset)
        if target is None or i < 0 or self._source.word(i) != target.spelling:
            return
        if target.kind.name == "ENUM_CONSTANT_DECL":
            constants = [child.spelling for child
                         in target.semantic_parent.get_children()
                         if child.kind.name == "ENUM_CONSTANT_DECL"]
            following = constants.index(target.spelling) + 1
            self._add(self._token(i), constants[following % len(constants)])
        elif (target.kind.name == "VAR_DECL" and
              target.type.is_const_qualified() and
              self._kind(target) in NUMBERS - {"BOOL", "ENUM"} and
              target.semantic_parent.kind.name not in FUNCTIONS and
              self._span(node)[1] == self._token(i)[1]):
            self._add(self._span(node), f"({self._text(self._span(node))} + 1)")

    def _on_MEMBER_REF_EXPR(self, node, children):
        i = self._source.token_at(node.location.offset)
        word = self._source.word(i)
        if i >= 0 and word in RELATIVES:
            self._add(self._token(i), RELATIVES[word])

    def _on_CXX_STATIC_CAST_EXPR(self, node, children):
        """The value without its conversion to another number."""
        if self._kind(node) in NUMBERS and self._kind(children[-1]) in NUMBERS:
            self._add(self._span(node),
                      f"({self._text(self._span(children[-1]))})")

    def _on_CALL_EXPR(self, node, children):
        span = self._span(node)
        if not self._is_whole(span):
            return
        for child in children:
            i = self._source.token_at(self._span(child)[0])
            if i >= 0 and self._source.tokens[i].kind == "operator" and (
                    self._token(i) == self._span(child)):
                operands = sorted((other for other in children
                                   if other != child), key=self._span)
                self._change_overloaded(i, operands)
                return
        arguments = [argument for argument in node.get_arguments()
                     if argument is not None]
        whole = [self._is_whole(self._span(argument)) and
                 span[0] <= self._span(argument)[0] and
                 self._span(argument)[1] <= span[1] for argument in arguments]
        for n in range(len(arguments) - 1):
            if whole[n] and whole[n + 1]:
                self._exchange(arguments[n], arguments[n + 1])
        # f(x) and x have the same type: x will do.
        callee = self._inner(children[0]) if len(children) == 2 else None
        if (callee is not None and callee.kind.name == "DECL_REF_EXPR" and
                len(arguments) == 1 and whole[0] and self._type_name(node) ==
                self._type_name(arguments[0])):
            self._add(span, f"({self._text(self._span(arguments[0]))})")

    def _change_overloaded(self, i, operands):
        if len(operands) == 2 and self._token(i)[0] >= self._span(
                operands[0])[1]:
            self._change_operator(i, *operands, is_overloaded=True)
        elif self._source.word(i) == "!":
            self._add(self._token(i), "")

    def _exchange(self, left, right):
        """Exchanges neighbouring arguments of the same type."""
        start, end = self._span(left), self._span(right)
        comma = self._operator_between(left, right)
        if (self._source.word(comma) == "," and
                self._type_name(left) == self._type_name(right)):
            self._add((start[0], end[1]), self._text(end) +
                      self._source.text[start[1]:end[0]] + self._text(start))
