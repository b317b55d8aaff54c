(* Conversion helpers *)
procedure ClearFoo(var Foo: TFoo);
function CompareFoo(const A, B: TFoo): Integer;
function Foo: Integer; { the default }
function FooToStr(Foo: TFoo;
  Quoted: Boolean): string;
procedure Register;
function StrToFoo(const S: string): TFoo;
