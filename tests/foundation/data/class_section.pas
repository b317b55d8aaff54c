    procedure WMSize(var Message: TWMSize); message WM_SIZE;
    function GetCount: Integer;
    { Reads the items from the stream;
      the stream must be open. }
    procedure ReadItems(Stream: TStream;
      Count: Integer;
      Options: TReadOptions);
    constructor Create(AOwner: TComponent); override;

    property Items[Index: Integer]: TItem read GetItem write SetItem; default;
    destructor Destroy; override;
    // the count of items
    function Add(const S: string): Integer; virtual;
